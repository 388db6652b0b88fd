#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "desk/ExitCode.h"
#include "desk/Number.h"
#include "vehiclectl/Commands.h"
#include "vehiclectl/CommonOptions.h"
#include "vehiclectl/PropertySelection.h"
#include "vehiclectl/PropertyTable.h"
#include "vehiclectl/SetGoal.h"
#include "vehiclectl/UserErrors.h"
#include "vehiclectl/VehicleLoop.h"

namespace qvn::tools {

using namespace platform::vehicle;

namespace {

struct SetOptions {
    std::string property;
    std::string value;
    std::string waitFor;   ///< PROPERTY=VALUE, or empty
    double timeout = 2.0;  ///< seconds for the service to be there, and again for the wait
};

// Nothing tells when the bus has sent a set: the process stays that long afterwards.
constexpr double kDeliverySeconds = 0.1;

std::chrono::milliseconds milliseconds(double seconds) {
    return std::chrono::ceil<std::chrono::milliseconds>(std::chrono::duration<double>(seconds));
}

/// A set is lost while the service is away.
Awaited awaitService(VehicleLoop& vehicle, const StopSignals& stop, double timeout) {
    vehicle.followService([](const ServiceState&) {});  // it ends the wait
    const Clock::time_point deadline = inSeconds(timeout);
    Awaited what = Awaited::Updates;
    while (what == Awaited::Updates && !vehicle.isServiceThere()) {
        what = vehicle.await(stop, deadline);
    }
    return what == Awaited::Deadline && vehicle.isServiceThere() ? Awaited::Updates : what;
}

/// Without a goal the outcome is there at once.
void set(VehicleSession& session, int property, std::int32_t value, const Goal& goal, double timeout,
         std::optional<SetOutcome>& outcome) {
    if (goal.property != nullptr) {
        session.setAndAwait(
            property, value, static_cast<int>(goal.property->id), goal.value, milliseconds(timeout),
            [&outcome](const SetOutcome& end) { outcome = end; }, EffectCounts::WhenThereAlready);
    } else {
        outcome.emplace();
        outcome->refusal = session.set(property, value);
        outcome->end = outcome->refusal ? SetEnd::Reached : SetEnd::Refused;
    }
}

/// Tells the user what has not gone well. @return the exit code
int report(const SetOutcome& outcome, const PropertyInfo& property, const Goal& goal, const std::string& timeout) {
    const std::string effect =
        goal.property != nullptr ? goal.property->name + " is " + valueText(*goal.property, outcome.effect) : "";
    const std::string wanted = formatNumber(goal.value);
    switch (outcome.end) {
        case SetEnd::Reached:
            return kDone;
        case SetEnd::TimedOut:
            printError(effect + " after " + timeout + ", not " + wanted);
            return kTimedOut;
        case SetEnd::ServiceGone:
            printError("the CAN service has gone; " + effect + ", not " + wanted);
            return kTimedOut;
        case SetEnd::Refused:
        case SetEnd::SessionEnded:
            break;
    }
    if (outcome.refusal.error == SetError::ServiceAway) {
        printError("the CAN service has gone; nothing was set");
        return kTimedOut;
    }
    printError("the vehicle client refused to set " + property.name);
    return kFailed;
}

int runSet(const SetOptions& options, const StopSignals& stop) {
    const PropertyInfo& property = propertyNamed(options.property);
    const std::int32_t value = valueToSet(property, options.value);
    const Goal goal = options.waitFor.empty() ? Goal() : readGoal(options.waitFor);
    const std::string timeout = formatNumber(options.timeout) + " s";

    std::optional<SetOutcome> outcome;
    VehicleLoop vehicle;
    if (!vehicle.open()) {
        return kFailed;
    }
    const Awaited there = awaitService(vehicle, stop, options.timeout);
    if (there == Awaited::Deadline) {
        printError("the CAN service did not appear within " + timeout + "; nothing was set");
        return kTimedOut;
    }
    if (there != Awaited::Updates) {
        return kFailed;
    }
    set(vehicle.session(), static_cast<int>(property.id), value, goal, options.timeout, outcome);
    const Clock::time_point delivered = inSeconds(kDeliverySeconds);
    Awaited what = Awaited::Updates;
    while (what != Awaited::Stop && !outcome) {
        what = vehicle.await(stop, std::nullopt);
    }
    while (what == Awaited::Updates && outcome->end == SetEnd::Reached) {
        what = vehicle.await(stop, delivered);
    }
    return what == Awaited::Stop ? kFailed : report(*outcome, property, goal, timeout);
}

}  // namespace

Run declareSet(CommandLine& line) {
    const auto options = std::make_shared<SetOptions>();
    line.option("PROPERTY", options->property, "");
    line.option("VALUE", options->value, "");
    line.option("--wait-for PROPERTY=VALUE", options->waitFor, "End when this property has this value");
    addTimeout(line, options->timeout);
    return [options](const StopSignals& stop, Output&) { return runSet(*options, stop); };
}

}  // namespace qvn::tools
