#pragma once

#include <optional>
#include <vector>

#include "can-service-sim/TraceReader.h"

namespace qvn::tools {

/// Which part of a trace is played; seconds of the trace.
struct TraceCut {
    std::optional<double> startAt;  ///< begins there, in the state that all events before it have led to
    std::optional<double> from;     ///< leaves out the events before
    std::optional<double> to;       ///< leaves out the events after
};

/// The part of a trace, with its times counted from its begin: `startAt` or `from`, whichever is given.
std::vector<TraceEvent> cutTrace(std::vector<TraceEvent> trace, const TraceCut& cut);

}  // namespace qvn::tools
