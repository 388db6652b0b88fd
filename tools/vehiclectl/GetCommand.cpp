#include <algorithm>

#include "desk/ExitCode.h"
#include "desk/MonotonicTime.h"
#include "desk/Number.h"
#include "vehiclectl/Commands.h"
#include "vehiclectl/PropertySelection.h"
#include "vehiclectl/PropertyState.h"
#include "vehiclectl/ServiceLink.h"
#include "vehiclectl/Waiting.h"

namespace qvn::tools {
namespace {

// The CAN service reports time-outs right after the values: get waits that long for them after the last value.
constexpr double kStatusSeconds = 0.005;

void print(Output& output, const PropertyState& state, bool json) {
    if (json) {
        output.write(jsonText(state) + "\n");
    } else {
        output.print("%-36s %-12s %-9s  %s\n", state.info->name.c_str(), valueText(state).c_str(), statusText(state),
                     ageText(state, monotonicNow(), 3).c_str());
    }
}

/// Takes in what the service reports until every property has a value and its status has had time to follow.
Awaited collect(PropertyStates& states, const StopSignals& stop, double timeout) {
    PropertyFeed& feed = PropertyFeed::instance();
    Clock::time_point deadline = inSeconds(timeout);
    bool complete = false;
    Awaited what = Awaited::Updates;
    while ((what = await(feed, stop, deadline)) == Awaited::Updates) {
        for (Update& update : feed.take()) {
            if (update.origin != Update::Origin::ReverseLine) {
                states.apply(std::move(update));
            }
        }
        if (!complete && states.complete()) {
            complete = true;
            deadline = std::min(deadline, inSeconds(kStatusSeconds));
        }
    }
    return what;
}

}  // namespace

int getCommand(const GetOptions& options, const StopSignals& stop, Output& output) {
    const std::vector<const PropertyInfo*> wanted = receivedProperties(options.properties);
    PropertyStates states(wanted);
    if (!startFeed(states.ids())) {
        return kFailed;
    }
    const ServiceLink service(wanted);
    if (collect(states, stop, options.timeout) == Awaited::Stop) {
        return kFailed;
    }
    int result = kDone;
    for (const PropertyInfo* const property : wanted) {
        const PropertyState& state = states.of(*property);
        if (numberOf(state)) {
            print(output, state, options.json);
        } else {
            printError("no value of " + property->name + " within " + formatNumber(options.timeout) + " s; " +
                       (service.online() ? "the CAN service has none" : "is the CAN service running?"));
            result = kTimedOut;
        }
    }
    return result;
}

}  // namespace qvn::tools
