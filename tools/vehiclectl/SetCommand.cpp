#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "desk/ExitCode.h"
#include "desk/Number.h"
#include "vehiclectl/Commands.h"
#include "vehiclectl/PropertySelection.h"
#include "vehiclectl/ServiceLink.h"
#include "vehiclectl/SetGoal.h"
#include "vehiclectl/Waiting.h"

namespace qvn::tools {
namespace {

using platform::vehicle::VehicleClient;

// Nothing tells when the bus has sent a set: the process stays that long afterwards.
constexpr double kDeliverySeconds = 0.1;

// The tool's own link may reach the service before the vehicle client does. The first value tells that the client has;
// with a service that has no values the client gets that long.
constexpr double kClientSeconds = 0.05;

/// Takes the updates in until a condition holds.
template <class Condition>
Awaited until(Condition condition, SetProgress& progress, const StopSignals& stop, Clock::time_point deadline) {
    while (!condition()) {
        const Awaited what = await(PropertyFeed::instance(), stop, deadline);
        if (what != Awaited::Updates) {
            return what;
        }
        for (Update& update : PropertyFeed::instance().take()) {
            progress.take(std::move(update));
        }
    }
    return Awaited::Updates;
}

/// Waits until a set can be expected to arrive.
Awaited awaitService(SetProgress& progress, const ServiceLink& service, const StopSignals& stop, double timeout) {
    const auto clientOnline = [&] { return progress.clientOnline(); };
    const auto online = [&] { return clientOnline() || service.online(); };
    const Awaited what = until(online, progress, stop, inSeconds(timeout));
    if (what != Awaited::Updates) {
        return what;
    }
    const bool stopped = until(clientOnline, progress, stop, inSeconds(kClientSeconds)) == Awaited::Stop;
    return stopped ? Awaited::Stop : Awaited::Updates;
}

/// Stays until the set has gone out and, where there is a goal, has had its effect.
Awaited awaitEffect(SetProgress& progress, bool hasGoal, const StopSignals& stop, double timeout) {
    const Clock::time_point delivered = inSeconds(kDeliverySeconds);
    const auto done = [&] { return !hasGoal || progress.goalReached(); };
    const Awaited what = until(done, progress, stop, inSeconds(timeout));
    const bool stopped =
        what == Awaited::Stop || until([] { return false; }, progress, stop, delivered) == Awaited::Stop;
    return stopped ? Awaited::Stop : what;
}

}  // namespace

int setCommand(const SetOptions& options, const StopSignals& stop) {
    const PropertyInfo& property = propertyNamed(options.property);
    std::vector<int> value{valueToSet(property, options.value)};
    const auto goal = options.waitFor.empty() ? std::nullopt : std::optional<Goal>(readGoal(options.waitFor));

    PropertyStates states(receivedProperties());
    if (!startFeed(states.ids())) {
        return kFailed;
    }
    // A set is lost while the service is away, and nothing tells that it was.
    using Properties = std::vector<const PropertyInfo*>;
    const ServiceLink service(goal ? Properties{goal->property} : Properties{});
    SetProgress progress(states);
    const Awaited there = awaitService(progress, service, stop, options.timeout);
    const std::string timeout = formatNumber(options.timeout) + " s";
    if (there == Awaited::Deadline) {
        printError("the CAN service did not appear within " + timeout + "; nothing was set");
        return kTimedOut;
    }
    if (there != Awaited::Updates) {
        return kFailed;
    }
    if (goal) {
        progress.lookFor(*goal);
    }
    if (!VehicleClient::getInstance()->setInt32Property(static_cast<int>(property.id), value)) {
        printError("the vehicle client refused to set " + property.name);
        return kFailed;
    }
    const Awaited effect = awaitEffect(progress, goal.has_value(), stop, options.timeout);
    if (effect == Awaited::Deadline) {
        printError(goal->property->name + " is " + valueText(states.of(*goal->property)) + " after " + timeout +
                   ", not " + formatNumber(goal->value));
        return kTimedOut;
    }
    return effect == Awaited::Updates ? kDone : kFailed;
}

}  // namespace qvn::tools
