#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>

#include "desk/ExitCode.h"
#include "desk/Json.h"
#include "desk/SignalNames.h"
#include "vehiclectl/Commands.h"
#include "vehiclectl/PropertyState.h"
#include "vehiclectl/ServiceLink.h"
#include "vehiclectl/Waiting.h"

namespace qvn::tools {
namespace {

struct Findings {
    bool up = false;
    std::size_t properties = 0;
    std::size_t withValue = 0;
    double rate = 0.0;  ///< values a second
    std::set<std::string> messages;
    std::set<std::string> timedOut;  ///< of the messages
};

Findings examine(const PropertyStates& states, const std::vector<const PropertyInfo*>& properties) {
    Findings found;
    found.up = states.service().up;
    found.properties = properties.size();
    for (const PropertyInfo* const property : properties) {
        const PropertyState& state = states.of(*property);
        found.withValue += state.value ? 1U : 0U;
        for (const std::uint32_t code : property->received) {
            if (const auto message = messageOf(code)) {
                found.messages.insert(signalName(*message));
                if (state.timedOut) {
                    found.timedOut.insert(signalName(*message));
                }
            }
        }
    }
    return found;
}

/// Tells the switches that share a property from each other.
std::vector<std::int32_t> directionOf(const platform::vehicle::VehiclePropValue& value) {
    const std::vector<std::int32_t>& numbers = value.value.int32Values;
    return numbers.size() < 2 ? std::vector<std::int32_t>() : std::vector<std::int32_t>{numbers[1]};
}

void print(Output& output, const Findings& found, bool json) {
    if (json) {
        const Json object = {{"service", found.up}, {"properties", found.properties},    {"values", found.withValue},
                             {"rate", found.rate},  {"messages", found.messages.size()}, {"timed_out", found.timedOut}};
        output.write(jsonText(object) + "\n");
        return;
    }
    std::string names;
    for (const std::string& name : found.timedOut) {
        names += (names.empty() ? "; timed out: " : ", ") + name;
    }
    if (!found.up) {
        output.print("CAN service  not there; start can-service-sim, or see 'vehiclectl doctor'\n");
        return;
    }
    output.print("CAN service  up\n");
    output.print("values       %zu of %zu properties, %.1f a second\n", found.withValue, found.properties, found.rate);
    output.print("messages     %zu of %zu ok%s\n", found.messages.size() - found.timedOut.size(), found.messages.size(),
                 names.c_str());
}

}  // namespace

int statusCommand(const MeasureOptions& options, const StopSignals& stop, Output& output) {
    const std::vector<const PropertyInfo*> wanted = receivedProperties();
    PropertyStates states(wanted);
    if (!startFeed(states.ids())) {
        return kFailed;
    }
    const ServiceLink service({});
    // The first values come all at once, and are no rate.
    std::set<std::pair<int, std::vector<std::int32_t>>> seen;
    std::size_t repeated = 0;
    const bool completed = followFor(options.duration, stop, [&](Update update) {
        if (update.kind == Update::Kind::Value && update.origin == Update::Origin::Service) {
            repeated += seen.insert({update.property, directionOf(update.value)}).second ? 0U : 1U;
        }
        if (update.origin != Update::Origin::ReverseLine) {
            states.apply(std::move(update));
        }
    });
    if (!completed) {
        return kFailed;
    }
    Findings found = examine(states, wanted);
    found.rate = static_cast<double>(repeated) / options.duration;
    print(output, found, options.json);
    return found.up ? kDone : kTimedOut;
}

}  // namespace qvn::tools
