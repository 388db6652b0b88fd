// The trace reader of can-service-sim: the input is a trace.

#include <cstdint>
#include <sstream>
#include <string>

#include "Require.h"
#include "can-service-sim/trace/TraceReader.h"
#include "desk/BadInput.h"

namespace {

using namespace qvn::tools;
using qvn::fuzz::require;

constexpr double kLongestTime = 1e6;

void requireSound(const std::vector<TraceEvent>& events) {
    double last = 0.0;
    for (const TraceEvent& event : events) {
        require(event.time && *event.time >= last && *event.time <= kLongestTime);
        last = *event.time;
        if (const auto* const signal = std::get_if<SignalEvent>(&event.action)) {
            require(signal->raw.size() <= 64);
            require(!signal->cycle || (signal->cycle->period >= 0.001 && signal->cycle->period <= kLongestTime));
        }
    }
    const double end = traceEnd(events);
    require(end >= last && end <= 2 * kLongestTime);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::istringstream input(std::string(data, data + size));
    try {
        requireSound(readTrace(input, "trace"));
    } catch (const BadInput& error) {
        const std::string text = error.what();
        require(text.rfind("trace:", 0) == 0 && text.find('\n') == std::string::npos);
    }
    return 0;
}
