#include <algorithm>
#include <cstdio>

#include "vehiclectl/Commands.h"
#include "vehiclectl/PropertyState.h"
#include "vehiclectl/Waiting.h"

namespace qvn::tools {
namespace {

// The CAN service reports time-outs right after the values: the last value waits that long for its status.
constexpr double kQuietSeconds = 0.05;

void print(const PropertyState& state, bool json) {
    if (json) {
        std::printf("%s\n", jsonText(state).c_str());
    } else {
        std::printf("%-36s %-12s %-9s  %.3f s\n", state.info->name.c_str(), valueText(state).c_str(), statusText(state),
                    std::max(ageOf(state, monotonicNow()), 0.0));
    }
}

}  // namespace

int getCommand(const GetOptions& options, const StopSignals& stop) {
    const std::vector<const PropertyInfo*> wanted = receivedProperties(options.properties);
    PropertyStates states(wanted);
    if (!startFeed(states.ids())) {
        return kFailed;
    }
    PropertyFeed& feed = PropertyFeed::instance();
    const auto hasValue = [&](const PropertyInfo* property) { return states.of(*property).value.has_value(); };
    const auto complete = [&] { return std::all_of(wanted.begin(), wanted.end(), hasValue); };
    const Clock::time_point deadline = inSeconds(options.timeout);
    for (;;) {
        const Awaited what = await(feed, stop, complete() ? std::min(deadline, inSeconds(kQuietSeconds)) : deadline);
        if (what == Awaited::Stop) {
            return kFailed;
        }
        if (what == Awaited::Deadline) {
            break;
        }
        for (Update& update : feed.take()) {
            states.apply(std::move(update));
        }
    }
    int result = kDone;
    for (const PropertyInfo* const property : wanted) {
        if (hasValue(property)) {
            print(states.of(*property), options.json);
        } else {
            printError("no value of " + property->name + " within " + formatNumber(options.timeout) +
                       " s; is the CAN service running?");
            result = kTimedOut;
        }
    }
    return result;
}

}  // namespace qvn::tools
