#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>

#include "e2e/Process.h"

namespace qvn::e2e {

/// A runtime directory of its own, and the tools running in it.
class Desk {
public:
    Desk();
    ~Desk();
    Desk(const Desk&) = delete;
    Desk& operator=(const Desk&) = delete;

    const std::string& directory() const { return mDirectory; }
    /// Writes a file beside the runtime directory's own ones and returns its path.
    std::string file(const std::string& name, const std::string& content) const;

    /// Starts a command: a program with its arguments, as the shell takes them.
    std::unique_ptr<Process> start(const std::string& command, Process::Environment variables = {}) const;
    /// Starts can-service-sim and waits until it serves.
    std::unique_ptr<Process> simulator(const std::string& options = "", Process::Environment variables = {}) const;
    /// Starts a watch and waits until it shows a value.
    std::unique_ptr<Process> watch(const std::string& properties) const;

    struct Result {
        std::optional<int> exitCode;  ///< none when it did not end
        std::string output;
        std::string errors;
    };

    /// Runs a command to its end, without standard input.
    Result run(const std::string& command, Process::Environment variables = {}) const;

private:
    std::string mDirectory;
};

/// A test of the tools: TEST_F(Suite, ...) with `using Suite = DeskTest`.
class DeskTest : public testing::Test {
protected:
    const Desk desk;
};

}  // namespace qvn::e2e
