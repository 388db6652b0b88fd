#pragma once

#include <optional>
#include <string>
#include <vector>

#include "can-service-sim/Player.h"

namespace qvn::tools {

/// A line that is a command: its name, and what follows it.
struct Command {
    std::string name;
    std::string argument;  ///< empty when there is none
};

struct CommandForm {
    std::string name;
    bool takesArgument;
};

/// The command that a line begins with; nothing when it is none of these.
/// @throws BadInput for a word too many
std::optional<Command> readCommand(const std::string& line, const std::vector<CommandForm>& forms);

/// The commands that takeLine() knows.
extern const std::vector<CommandForm> kPlayerCommands;

/// Lets the player do what a line says, an event of a trace or a command.
/// @return what is to be told of it, whole lines; empty when there is nothing
/// @throws BadInput for a line that is wrong
std::string takeLine(Player& player, const std::string& line);

}  // namespace qvn::tools
