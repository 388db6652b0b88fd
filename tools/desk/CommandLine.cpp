#include "desk/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>
#include <utility>

#include "desk/BadInput.h"
#include "desk/ExitCode.h"
#include "desk/Number.h"
#include "desk/Suggestions.h"
#include "desk/Text.h"

namespace qvn::tools {
namespace {

std::vector<std::string> optionsOf(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::Option* const option : app.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            names.push_back("--" + name);
        }
    }
    return names;
}

std::vector<std::string> commandsOf(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* const command : app.get_subcommands([](const CLI::App*) { return true; })) {
        names.push_back(command->get_name());
    }
    return names;
}

/// What is wrong about an argument that has no place in the command line.
std::string unexpected(const CLI::App& app, const CLI::App& command, const std::string& argument) {
    if (argument.size() > 1 && argument[0] == '-') {
        std::vector<std::string> options = optionsOf(app);
        const std::vector<std::string> more = optionsOf(command);
        options.insert(options.end(), more.begin(), more.end());
        const std::string name = argument.substr(0, argument.find('='));
        if (std::find(options.begin(), options.end(), name) != options.end()) {
            return tools::quoted(name) + " belongs to a command; expected it after that, as in '" + app.get_name() +
                   " COMMAND " + name + "'";
        }
        return "unknown option " + tools::quoted(name) + suggestionText(name, options);
    }
    const std::vector<std::string> commands = commandsOf(app);
    if (&app == &command && !commands.empty()) {
        return "unknown command " + tools::quoted(argument) + suggestionText(argument, commands);
    }
    return tools::quoted(argument) + " is not expected here";
}

std::string complaint(const CLI::App& app, const CLI::App& command, const CLI::ParseError& error) {
    const std::vector<std::string> rest = app.remaining(true);
    const auto isOption = [](const std::string& text) { return text.size() > 1 && text[0] == '-'; };
    // An unknown option comes first: what else is wrong may follow from it.
    if (const auto option = std::find_if(rest.begin(), rest.end(), isOption); option != rest.end()) {
        return unexpected(app, command, *option);
    }
    if (dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr && !rest.empty()) {
        return unexpected(app, command, rest.back());
    }
    const std::string text = error.what();
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr) {
        const bool many = text.find("At Most") != std::string::npos;
        return text.substr(0, text.find(':')) + (many ? " may be given only once" : " needs a value");
    }
    return text;
}

/// What is wrong with a text; empty when it is a number of the range, which `what` names.
std::string checkNumber(const std::string& text, CommandLine::Range range, const std::string& what) {
    try {
        if (parseHex(text)) {
            return tools::quoted(text) + " is not a decimal number; expected " + what;
        }
        // CLI11's own check lets a NaN pass, which is neither below nor above a limit.
        const double number = parseNumber(text, what);
        return number >= range.low && number <= range.high ? ""
                                                           : tools::quoted(text) + " is out of range; expected " + what;
    } catch (const BadInput& error) {
        return error.what();
    }
}

std::function<std::string(const std::string&)> numberIn(CommandLine::Range range) {
    const std::string what = "a number from " + formatNumber(range.low) + " to " + formatNumber(range.high);
    return [range, what](const std::string& text) { return checkNumber(text, range, what); };
}

std::function<std::string(const std::string&)> wholeNumberIn(CommandLine::Range range) {
    const auto digits = [](double limit) { return std::to_string(static_cast<long>(limit)); };
    const std::string what = "a whole number from " + digits(range.low) + " to " + digits(range.high);
    return [range, what](const std::string& text) {
        const std::string complaint = checkNumber(text, range, what);
        const bool whole = text.find_first_not_of("0123456789") == std::string::npos;
        return complaint.empty() && !whole ? tools::quoted(text) + " is not a whole number; expected " + what
                                           : complaint;
    };
}

std::string withoutBrackets(const std::string& text) {
    return !text.empty() && text.front() == '[' ? text.substr(1, text.size() - 2) : text;
}

}  // namespace

CommandLine::Option& CommandLine::Option::needs(const char* other) {
    mOption->needs(std::string(other));
    return *this;
}

CommandLine::Option& CommandLine::Option::excludes(const char* other) {
    mOption->excludes(std::string(other));
    return *this;
}

CommandLine::Option& CommandLine::Option::check(std::function<std::string(const std::string&)> complaint) {
    mOption->check(
        CLI::Validator([complaint = std::move(complaint)](std::string& text) { return complaint(text); }, ""));
    return *this;
}

bool CommandLine::Option::given() const {
    return mOption->count() != 0;
}

CommandLine::CommandLine(const std::string& tool, const std::string& about)
    : mApp(std::make_shared<CLI::App>(about, tool)) {}

// CLI11's own conversions are templates, which take longer to compile than all of this file.
CLI::Option* CommandLine::add(const std::string& usage, const char* about, const std::string& shownDefault, Take take) {
    const std::size_t end = usage.find(' ');
    const std::string names = usage.substr(0, end);
    const std::string valueName = end == std::string::npos ? "" : usage.substr(end + 1);
    const CLI::callback_t callback = [take = std::move(take)](const CLI::results_t& words) {
        take(words);
        return true;
    };
    CLI::Option* const option = mApp->add_option(withoutBrackets(names), callback, about);
    option->type_name(valueName)->default_str(shownDefault);
    option->required(names.front() != '-' && names.front() != '[');
    if (!valueName.empty() && valueName.front() == '[') {
        option->expected(0, 1);
    }
    return option;
}

CommandLine::Option CommandLine::flag(const char* names, bool& given, const char* about) {
    return Option(mApp->add_flag(names, given, about));
}

CommandLine::Option CommandLine::option(const char* usage, std::string& value, const char* about) {
    return Option(add(usage, about, value, [&value](const auto& words) { value = words.front(); }));
}

CommandLine::Option CommandLine::option(const char* usage, std::vector<std::string>& values, const char* about) {
    CLI::Option* const option = add(usage, about, "", [&values](const auto& words) { values = words; });
    option->expected(CLI::detail::expected_max_vector_size)->allow_extra_args(usage[0] != '-');
    return Option(option);
}

CommandLine::Option CommandLine::option(const char* usage, double& value, Range range, const char* about) {
    const auto take = [&value](const auto& words) { value = parseNumber(words.front(), ""); };
    return Option(add(usage, about, formatNumber(value), take)).check(numberIn(range));
}

CommandLine::Option CommandLine::option(const char* usage, std::optional<double>& value, Range range,
                                        const char* about) {
    const auto take = [&value](const auto& words) { value = parseNumber(words.front(), ""); };
    return Option(add(usage, about, "", take)).check(numberIn(range));
}

CommandLine::Option CommandLine::option(const char* usage, std::optional<long>& value, Range range, const char* about) {
    const auto take = [&value](const auto& words) { value = std::stol(words.front()); };
    return Option(add(usage, about, "", take)).check(wholeNumberIn(range));
}

CommandLine CommandLine::command(const char* name, const char* about) {
    mApp->require_subcommand(0, 1);
    mApp->fallthrough();
    CLI::App* const command = mApp->add_subcommand(name, about);
    return CommandLine(mApp->get_subcommand_ptr(command));
}

void CommandLine::whenRead(std::function<void()> call) {
    mApp->callback(std::move(call));
}

void CommandLine::closeHelpWith(const std::string& text) {
    mApp->footer(text);
}

std::string CommandLine::help() const {
    return mApp->help();
}

std::optional<int> CommandLine::read(int argc, char** argv, Output& output) {
    mApp->set_version_flag("--version", mApp->get_name() + " " QVN_VERSION, "Print the version and end");
    try {
        mApp->parse(argc, argv);
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        std::ostringstream help, errors;
        if (mApp->exit(error, help, errors) == 0) {
            output.write(help.str());
            return kDone;
        }
        const std::vector<CLI::App*> selected = mApp->get_subcommands();
        const CLI::App& command = selected.empty() ? *mApp : *selected.front();
        const std::string tool = mApp->get_name() + (selected.empty() ? "" : " " + command.get_name());
        const std::string text = complaint(*mApp, command, error);
        throw BadInput(text + (text.back() == '?' ? "" : "; see '" + tool + " --help'"));
    }
}

}  // namespace qvn::tools
