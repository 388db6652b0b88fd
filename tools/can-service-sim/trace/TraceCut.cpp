#include "can-service-sim/trace/TraceCut.h"

#include <algorithm>

namespace qvn::tools {

std::vector<TraceEvent> cutTrace(std::vector<TraceEvent> trace, std::optional<double> from, std::optional<double> to) {
    const double begin = from.value_or(0.0);
    const auto isOutside = [&](const TraceEvent& event) {
        return *event.time < begin || *event.time > to.value_or(1e9);
    };
    trace.erase(std::remove_if(trace.begin(), trace.end(), isOutside), trace.end());
    for (TraceEvent& event : trace) {
        *event.time -= begin;
    }
    return trace;
}

}  // namespace qvn::tools
