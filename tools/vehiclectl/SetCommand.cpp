#include <cmath>
#include <optional>
#include <utility>

#include "desk/BadInput.h"
#include "desk/ExitCode.h"
#include "desk/Number.h"
#include "desk/PhysicalValue.h"
#include "desk/SignalNames.h"
#include "desk/SignalNotes.h"
#include "desk/Text.h"
#include "vehiclectl/Commands.h"
#include "vehiclectl/PropertyState.h"
#include "vehiclectl/ServiceLink.h"
#include "vehiclectl/Waiting.h"

namespace qvn::tools {
namespace {

using platform::vehicle::VehicleClient;

// Nothing tells when the bus has sent a set: the process stays that long afterwards.
constexpr double kDeliverySeconds = 0.1;

// The tool's own link may reach the service before the vehicle client does. The first value tells that the client has;
// with a service that has no values the client gets that long.
constexpr double kClientSeconds = 0.05;

struct Goal {
    const PropertyInfo* property = nullptr;
    double value = 0.0;
};

std::optional<Goal> readGoal(const std::string& text) {
    if (text.empty()) {
        return std::nullopt;
    }
    const std::size_t mark = text.find('=');
    if (mark == std::string::npos) {
        throw BadInput(tools::quoted(text) + " is nothing to wait for; expected PROPERTY=VALUE");
    }
    const std::string_view value = std::string_view(text).substr(mark + 1);
    const PropertyInfo& property = *receivedProperties({text.substr(0, mark)}).front();
    return Goal{&property, parseValue(property.received.front(), value, "a value after '='")};
}

double readValue(const PropertyInfo& property, const std::string& text) {
    if (property.settable.empty()) {
        throw BadInput(property.name + " is only reported by the vehicle; it cannot be set");
    }
    const std::uint32_t code = property.settable.front();
    const double value = parseValue(code, text, "the value to set");
    const SetRange range = setRange(*tables::findSetSignal(code));
    if (value != std::floor(value) || value < range.low || value > range.high) {
        throw BadInput("value " + text + " does not fit " + property.name + "; expected a whole number from " +
                       std::to_string(range.low) + " to " + std::to_string(range.high));
    }
    return value;
}

bool reached(const PropertyStates& states, const Goal& goal) {
    // Far less than a step of any signal: it only allows for the rounding of floats.
    constexpr double kTolerance = 1e-3;
    const std::optional<double> number = numberOf(states.of(*goal.property));
    return number && std::fabs(*number - goal.value) < kTolerance;
}

/// Follows the updates until a condition holds.
class Follower {
public:
    Follower(PropertyStates& states, const StopSignals& stop) : states_(states), stop_(stop) {}

    /// True once the service has reported anything to the vehicle client.
    bool clientOnline() const { return clientOnline_; }

    /// From now on every update is looked at, so that a value which is there only for a moment counts.
    void lookFor(const Goal& goal) {
        goal_ = goal;
        goalReached_ = reached(states_, goal);
    }
    bool goalReached() const { return goalReached_; }

    const PropertyState& stateOf(const PropertyInfo& property) const { return states_.of(property); }

    template <class Condition>
    Awaited until(Condition condition, Clock::time_point deadline) {
        while (!condition()) {
            const Awaited what = await(PropertyFeed::instance(), stop_, deadline);
            if (what != Awaited::Updates) {
                return what;
            }
            for (Update& update : PropertyFeed::instance().take()) {
                take(std::move(update));
            }
        }
        return Awaited::Updates;
    }

private:
    void take(Update update) {
        if (update.origin == Update::Origin::ReverseLine) {
            return;
        }
        clientOnline_ = clientOnline_ || update.origin == Update::Origin::Service;
        states_.apply(std::move(update));
        goalReached_ = goalReached_ || (goal_ && reached(states_, *goal_));
    }

    PropertyStates& states_;
    const StopSignals& stop_;
    std::optional<Goal> goal_;
    bool clientOnline_ = false;
    bool goalReached_ = false;
};

/// Waits until a set can be expected to arrive.
Awaited awaitService(Follower& follower, const ServiceLink& service, double timeout) {
    const auto clientOnline = [&] { return follower.clientOnline(); };
    const Awaited what = follower.until([&] { return clientOnline() || service.online(); }, inSeconds(timeout));
    if (what != Awaited::Updates) {
        return what;
    }
    return follower.until(clientOnline, inSeconds(kClientSeconds)) == Awaited::Stop ? Awaited::Stop : Awaited::Updates;
}

/// Stays until the set has gone out and, where there is a goal, has had its effect.
int follow(Follower& follower, const std::optional<Goal>& goal, double timeout) {
    const Clock::time_point delivered = inSeconds(kDeliverySeconds);
    const auto done = [&] { return !goal || follower.goalReached(); };
    const Awaited what = follower.until(done, inSeconds(timeout));
    if (what == Awaited::Stop || follower.until([] { return false; }, delivered) == Awaited::Stop) {
        return kFailed;
    }
    if (what == Awaited::Updates) {
        return kDone;
    }
    printError(goal->property->name + " is " + valueText(follower.stateOf(*goal->property)) + " after " +
               formatNumber(timeout) + " s, not " + formatNumber(goal->value));
    return kTimedOut;
}

}  // namespace

int setCommand(const SetOptions& options, const StopSignals& stop) {
    const PropertyInfo& property = propertyNamed(options.property);
    std::vector<int> value{static_cast<int>(readValue(property, options.value))};
    const std::optional<Goal> goal = readGoal(options.waitFor);

    PropertyStates states(receivedProperties());
    if (!startFeed(states.ids())) {
        return kFailed;
    }
    // A set is lost while the service is away, and nothing tells that it was.
    using Properties = std::vector<const PropertyInfo*>;
    const ServiceLink service(goal ? Properties{goal->property} : Properties{});
    Follower follower(states, stop);
    switch (awaitService(follower, service, options.timeout)) {
        case Awaited::Updates:
            break;
        case Awaited::Stop:
        case Awaited::Input:
            return kFailed;
        case Awaited::Deadline:
            printError("the CAN service did not appear within " + formatNumber(options.timeout) +
                       " s; nothing was set");
            return kTimedOut;
    }
    if (goal) {
        follower.lookFor(*goal);
    }
    if (!VehicleClient::getInstance()->setInt32Property(static_cast<int>(property.id), value)) {
        printError("the vehicle client refused to set " + property.name);
        return kFailed;
    }
    return follow(follower, goal, options.timeout);
}

}  // namespace qvn::tools
