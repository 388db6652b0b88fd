#include "can-service-sim/trace/TraceEvents.h"

#include <algorithm>

#include "can-service-sim/Generator.h"

namespace qvn::tools {
namespace {

double lasting(const TraceAction& action) {
    if (const auto* const signal = std::get_if<SignalEvent>(&action)) {
        return signal->cycle ? signal->cycle->duration.value_or(0.0) : 0.0;
    }
    const auto* const generate = std::get_if<GenerateEvent>(&action);
    return generate ? generate->generator->duration().value_or(0.0) : 0.0;
}

}  // namespace

std::optional<std::uint64_t> lastTick(const Cycle& cycle) {
    return cycle.duration ? std::optional(periodsIn(*cycle.duration, cycle.period) - 1) : std::nullopt;
}

double traceEnd(const std::vector<TraceEvent>& events) {
    double end = 0.0;
    for (const TraceEvent& event : events) {
        end = std::max(end, event.time.value_or(0.0) + lasting(event.action));
    }
    return end;
}

}  // namespace qvn::tools
