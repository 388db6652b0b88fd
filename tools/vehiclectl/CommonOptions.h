#pragma once

#include <optional>

#include "desk/CommandLine.h"

namespace qvn::tools {

/// The options that several commands have, each with one meaning.

void addJson(CommandLine& line, bool& json);

/// --timeout: seconds to wait.
void addTimeout(CommandLine& line, double& timeout);

/// --duration, of a command that looks for a while: seconds.
void addTimeToLook(CommandLine& line, double& duration);

/// When a command that would go on for ever ends.
struct Ends {
    std::optional<double> duration;  ///< seconds
    std::optional<long> count;       ///< of what the command is about
};

/// --duration and --count.
/// @param countText what help says of --count
void addEnds(CommandLine& line, Ends& ends, const char* countText);

}  // namespace qvn::tools
