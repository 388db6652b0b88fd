#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "desk/Output.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace qvn::tools {

/// The command line of a tool, or of one of its commands. What may stand in it is declared first, each with the
/// variable that takes it, which must live until it has been read; what a variable holds before is the default that
/// help shows.
///
/// CLI11 reads it, but only CommandLine.cpp includes CLI11: its header takes seconds to compile.
class CommandLine {
public:
    class Option {
    public:
        Option() = default;
        explicit Option(CLI::Option* option) : mOption(option) {}

        /// Names an option that was declared before, as "--dbc".
        Option& needs(const char* other);
        Option& excludes(const char* other);
        /// @param complaint what is wrong with a value; empty when nothing is
        Option& check(std::function<std::string(const std::string&)> complaint);

        /// Whether it was there, with a value or without one.
        bool given() const;

    private:
        CLI::Option* mOption = nullptr;
    };

    struct Range {
        double low;
        double high;
    };

    CommandLine(const std::string& tool, const std::string& about);

    Option flag(const char* names, bool& given, const char* about);

    /// @param usage names and value, "-p,--play FILE"; the value may be left away in "--play [FILE]". A word without
    ///              hyphen stands for itself, "FILE", and may be left away in "[FILE]". A list takes one value each
    ///              time that its option is given, or all words that are left.
    Option option(const char* usage, std::string& value, const char* about);
    Option option(const char* usage, std::vector<std::string>& values, const char* about);
    Option option(const char* usage, double& value, Range range, const char* about);
    Option option(const char* usage, std::optional<double>& value, Range range, const char* about);
    Option option(const char* usage, std::optional<long>& value, Range range, const char* about);

    /// A command of the tool, of which a command line has at most one. The options before may stand behind it, too.
    CommandLine command(const char* name, const char* about);
    /// @param call is called when this command has been read
    void whenRead(std::function<void()> call);

    /// What help says at its end, that of commands, too, if they are declared later.
    void closeHelpWith(const std::string& text);
    std::string help() const;

    /// Reads the arguments of main(); --version is a part of every tool's. The exit code when the tool ends with that,
    /// since its help or version was asked for.
    /// @throws BadInput for a wrong usage, with the closest option or command that there is
    std::optional<int> read(int argc, char** argv, Output& output);

private:
    explicit CommandLine(std::shared_ptr<CLI::App> app) : mApp(std::move(app)) {}

    using Take = std::function<void(const std::vector<std::string>& words)>;
    CLI::Option* add(const std::string& usage, const char* about, const std::string& shownDefault, Take take);

    std::shared_ptr<CLI::App> mApp;
};

}  // namespace qvn::tools
