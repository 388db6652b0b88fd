#pragma once

#include <sys/types.h>

#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace qvn::e2e {

/// How long anything may take before a test gives up on it.
constexpr int kDeadlineSeconds = 30;

/// A program that runs, with what it has written so far. Killed when it goes out of scope.
class Process {
public:
    using Environment = std::map<std::string, std::string>;

    Process(const std::vector<std::string>& command, const Environment& environment);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    pid_t pid() const { return pid_; }

    /// Writes to its standard input.
    void write(const std::string& text) const;
    void closeInput();

    std::string output() const;
    std::string errors() const;

    /// Waits until its standard output satisfies the condition. False when it does not, or the program has ended.
    bool waitForOutput(const std::function<bool(const std::string&)>& condition);
    bool waitForOutput(const std::string& text);

    void signal(int number) const;
    /// Waits for its end: the exit code, or minus the number of the signal that ended it. Nothing when it goes on.
    std::optional<int> wait();

private:
    void collect(int fd, std::string& text);
    bool waitUntil(const std::function<bool()>& condition);

    pid_t pid_ = -1;
    int input_ = -1;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::string output_;
    std::string errors_;
    int openStreams_ = 2;
    std::optional<int> exitCode_;
    std::thread outputReader_;
    std::thread errorReader_;
};

/// A runtime directory of its own, and the tools running in it.
class Desk {
public:
    Desk();
    ~Desk();
    Desk(const Desk&) = delete;
    Desk& operator=(const Desk&) = delete;

    const std::string& directory() const { return directory_; }
    /// Writes a file beside the runtime directory's own ones and returns its path.
    std::string file(const std::string& name, const std::string& content) const;

    /// Starts the simulator and waits until it serves.
    std::unique_ptr<Process> simulator(std::vector<std::string> arguments = {}) const;
    std::unique_ptr<Process> vehiclectl(std::vector<std::string> arguments) const;

    struct Result {
        int exitCode;
        std::string output;
        std::string errors;
    };

    /// Runs a program to its end, without standard input.
    Result run(const std::vector<std::string>& command, Process::Environment more = {}) const;
    Result runVehiclectl(std::vector<std::string> arguments, const Process::Environment& more = {}) const;
    Result runSimulator(const std::vector<std::string>& arguments, const Process::Environment& more = {}) const;

private:
    Process::Environment environment() const { return {{"QVN_HOST_DIR", directory_}}; }

    std::string directory_;
};

}  // namespace qvn::e2e
