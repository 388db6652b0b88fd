#pragma once

#include <CLI/CLI.hpp>
#include <optional>

#include "desk/Output.h"

namespace qvn::tools {

/// Reads the command line, of which --version is a part in every tool. The exit code when the tool ends with that,
/// since its help or version was asked for.
/// @throws BadInput for a wrong usage, with the closest option or command that there is
std::optional<int> readCommandLine(CLI::App& app, int argc, char** argv, Output& output);

/// Checks the number of an option. CLI11's own check lets a NaN pass, which is neither below nor above a limit.
CLI::Validator numberFrom(double low, double high);

}  // namespace qvn::tools
