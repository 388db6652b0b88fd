#pragma once

#include <functional>

#include "desk/CommandLine.h"
#include "desk/Output.h"
#include "desk/StopSignals.h"

namespace qvn::tools {

/// Does what a command is for, once its command line has been read. Returns an ExitCode, and throws BadInput for what
/// the user got wrong.
using Run = std::function<int(const StopSignals& stop, Output& output)>;

/// Each of these declares what may follow the name of its command, and returns what then runs, with what was given.
/// The table of commands in main.cpp has a row for each.
Run declareDoctor(CommandLine& line);
Run declareGet(CommandLine& line);
Run declareHz(CommandLine& line);
Run declareInfo(CommandLine& line);
Run declareList(CommandLine& line);
Run declareRecord(CommandLine& line);
Run declareSet(CommandLine& line);
Run declareStatus(CommandLine& line);
Run declareWatch(CommandLine& line);

}  // namespace qvn::tools
