#include "desk/CommandLine.h"

#include <iostream>
#include <sstream>
#include <string>

#include "desk/BadInput.h"
#include "desk/ExitCode.h"
#include "desk/Number.h"
#include "desk/Text.h"

namespace qvn::tools {

std::optional<int> readCommandLine(CLI::App& app, int argc, char** argv, Output& output) {
    try {
        app.parse(argc, argv);
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        std::ostringstream help;
        const int result = app.exit(error, help, std::cerr);
        output.write(help.str());
        return result == 0 ? kDone : kUsage;
    }
}

CLI::Validator numberFrom(double low, double high) {
    const std::string what = "a number from " + formatNumber(low) + " to " + formatNumber(high);
    const auto check = [low, high, what](const std::string& text) -> std::string {
        try {
            const double number = parseNumber(text, what);
            return number >= low && number <= high ? "" : tools::quoted(text) + " is out of range; expected " + what;
        } catch (const BadInput& error) {
            return error.what();
        }
    };
    return CLI::Validator(check, "");
}

}  // namespace qvn::tools
