#pragma once

#include <optional>
#include <vector>

#include "can-service-sim/trace/TraceEvents.h"

namespace qvn::tools {

/// The part of a trace between two times, in seconds of the trace, if they are given: as if nothing had been before,
/// with its times counted from its begin.
std::vector<TraceEvent> cutTrace(std::vector<TraceEvent> trace, std::optional<double> from, std::optional<double> to);

}  // namespace qvn::tools
