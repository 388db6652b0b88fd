#include "can-service-sim/PlayerLines.h"

#include <algorithm>
#include <cmath>
#include <sstream>

#include "can-service-sim/trace/TraceReader.h"
#include "desk/BadInput.h"
#include "desk/Number.h"
#include "desk/Text.h"

namespace qvn::tools {
namespace {

double numberWithin(const std::string& text, double low, double high, const std::string& what) {
    const double number = parseNumber(text, what);
    if (number < low || number > high) {
        throw BadInput(tools::quoted(text) + " is out of range; expected " + what + " from " + formatNumber(low) +
                       " to " + formatNumber(high));
    }
    return number;
}

std::string positionText(const Player& player) {
    return "the trace stands at " + formatNumber(std::round(player.progress().position * 1000.0) / 1000.0) + " s\n";
}

}  // namespace

const std::vector<CommandForm> kPlayerCommands = {{"pause", false}, {"resume", false}, {"seek", true}, {"speed", true}};

std::optional<Command> readCommand(const std::string& line, const std::vector<CommandForm>& forms) {
    std::istringstream words(line);
    Command command;
    std::string extra;
    words >> command.name >> command.argument >> extra;
    const auto form =
        std::find_if(forms.begin(), forms.end(), [&](const CommandForm& known) { return known.name == command.name; });
    if (form == forms.end()) {
        return std::nullopt;
    }
    if (!extra.empty() || (!command.argument.empty() && !form->takesArgument)) {
        throw BadInput(tools::quoted(extra.empty() ? command.argument : extra) + " is not expected behind " +
                       command.name + "; see 'help'");
    }
    return command;
}

std::string takeLine(Player& player, const std::string& line) {
    const std::optional<Command> command = readCommand(line, kPlayerCommands);
    if (!command) {
        if (const std::optional<TraceEvent> event = readTraceLine(line)) {
            player.schedule(*event);
        }
        return "";
    }
    const double length = player.progress().length;
    if (command->name == "speed") {
        player.setSpeed(numberWithin(command->argument, 0.001, 1000.0, "a speed"));
        return "";
    }
    if (length <= 0.0) {
        throw BadInput("there is no trace to " + command->name + "; start with --play FILE");
    }
    if (command->name == "resume") {
        player.resume();
        return "";
    }
    if (command->name == "pause") {
        player.pause();
    } else {
        player.seek(numberWithin(command->argument, 0.0, length, "seconds of the trace"));
    }
    return positionText(player);
}

}  // namespace qvn::tools
