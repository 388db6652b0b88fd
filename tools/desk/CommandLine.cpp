#include "desk/CommandLine.h"

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

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
        return text.substr(0, text.find(':')) + " needs a value";
    }
    return text;
}

}  // namespace

std::optional<int> readCommandLine(CLI::App& app, int argc, char** argv, Output& output) {
    app.set_version_flag("--version", app.get_name() + " " QVN_VERSION, "Print the version and end");
    try {
        app.parse(argc, argv);
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        std::ostringstream help, errors;
        if (app.exit(error, help, errors) == 0) {
            output.write(help.str());
            return kDone;
        }
        const std::vector<CLI::App*> selected = app.get_subcommands();
        const CLI::App& command = selected.empty() ? app : *selected.front();
        const std::string tool = app.get_name() + (selected.empty() ? "" : " " + command.get_name());
        const std::string text = complaint(app, command, error);
        throw BadInput(text + (text.back() == '?' ? "" : "; see '" + tool + " --help'"));
    }
}

CLI::Validator numberFrom(double low, double high) {
    const std::string what = "a number from " + formatNumber(low) + " to " + formatNumber(high);
    const auto check = [low, high, what](const std::string& text) -> std::string {
        try {
            if (parseHex(text)) {
                return tools::quoted(text) + " is no decimal number; expected " + what;
            }
            const double number = parseNumber(text, what);
            return number >= low && number <= high ? "" : tools::quoted(text) + " is out of range; expected " + what;
        } catch (const BadInput& error) {
            return error.what();
        }
    };
    return CLI::Validator(check, "");
}

}  // namespace qvn::tools
