#pragma once

#include <cstddef>
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

/// The events that lead from any other state of a trace to the one at a time, the events of that time included, be the
/// other before or after. What the trace is about later only is as before its begin: signals zero, the reverse line
/// released, the service offered; but for signals in CAN frames, which keep their values.
std::vector<TraceEvent> stateAt(const std::vector<TraceEvent>& trace, double time);

/// The place of the first event after a time.
std::size_t nextAfter(const std::vector<TraceEvent>& trace, double time);

}  // namespace qvn::tools
