#pragma once

#include <functional>
#include <string>

#include "desk/Output.h"
#include "desk/StopSignals.h"

namespace qvn::tools {

/// Runs a tool until all that it wrote is out; returns the exit code of the process. What `work` throws becomes an
/// error line, as does output that cannot be written; `printError` shows one.
int runTool(const std::function<int(const StopSignals&, Output&)>& work,
            const std::function<void(const std::string&)>& printError);

}  // namespace qvn::tools
