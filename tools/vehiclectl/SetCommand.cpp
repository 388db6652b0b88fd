#include <cmath>
#include <optional>
#include <utility>

#include "common/PhysicalValue.h"
#include "common/SignalNames.h"
#include "vehiclectl/Commands.h"
#include "vehiclectl/PropertyState.h"
#include "vehiclectl/Waiting.h"

namespace qvn::tools {
namespace {

using platform::vehicle::VehicleClient;

// A set is one way: nothing tells when the bus has taken it, so the process stays that long after handing it over.
constexpr double kDeliverySeconds = 0.1;

// The client makes values of these two from the reverse line, with or without a CAN service.
constexpr std::uint32_t kParkingWorkCommand = 0x2140307A;
constexpr std::uint32_t kSystemPowerMode = 0x21403837;

bool comesFromService(const Update& update) {
    const auto id = static_cast<std::uint32_t>(update.property);
    return update.kind == Update::Kind::Status || (id != kParkingWorkCommand && id != kSystemPowerMode);
}

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
        throw BadInput(quoted(text) + " is nothing to wait for; expected PROPERTY=VALUE");
    }
    const std::string_view value = std::string_view(text).substr(mark + 1);
    return Goal{receivedProperties({text.substr(0, mark)}).front(), parseNumber(value, "a value after '='")};
}

double readValue(const PropertyInfo& property, const std::string& text) {
    if (property.settable.empty()) {
        throw BadInput(property.name + " is only reported by the vehicle; it cannot be set");
    }
    const double value = parseNumber(text, "the value to set");
    const SetRange range = setRange(*tables::findSetSignal(property.settable.front()));
    if (value != std::floor(value) || value < range.low || value > range.high) {
        throw BadInput("value " + text + " does not fit " + property.name + "; expected a whole number from " +
                       std::to_string(range.low) + " to " + std::to_string(range.high));
    }
    return value;
}

/// Follows the updates until a condition holds.
class Follower {
public:
    Follower(PropertyStates& states, const StopSignals& stop) : states_(states), stop_(stop) {}

    /// True once the service has reported anything.
    bool online() const { return online_; }

    template <class Condition>
    Awaited until(Condition condition, double timeout) {
        const Clock::time_point deadline = inSeconds(timeout);
        while (!condition()) {
            const Awaited what = await(PropertyFeed::instance(), stop_, deadline);
            if (what != Awaited::Updates) {
                return what;
            }
            for (Update& update : PropertyFeed::instance().take()) {
                online_ = online_ || comesFromService(update);
                states_.apply(std::move(update));
            }
        }
        return Awaited::Updates;
    }

private:
    PropertyStates& states_;
    const StopSignals& stop_;
    bool online_ = false;
};

bool reached(const PropertyStates& states, const Goal& goal) {
    // Floats carry one step of a CAN signal at best; the comparison only forgives their rounding.
    constexpr double kTolerance = 1e-3;
    const std::optional<double> number = numberOf(states.of(*goal.property));
    return number && std::fabs(*number - goal.value) < kTolerance;
}

}  // namespace

int setCommand(const SetOptions& options, const StopSignals& stop) {
    const PropertyInfo& property = propertyNamed(options.property);
    std::vector<int> value{static_cast<int>(readValue(property, options.value))};
    const std::optional<Goal> goal = readGoal(options.waitFor);

    // The client drops a set while the service is away. Its values, which it reports when it is reached, tell.
    PropertyStates states(receivedProperties());
    if (!startFeed(states.ids())) {
        return kFailed;
    }
    Follower follower(states, stop);
    switch (follower.until([&] { return follower.online(); }, options.timeout)) {
        case Awaited::Updates:
            break;
        case Awaited::Stop:
            return kFailed;
        case Awaited::Deadline:
            printError("the CAN service did not report within " + formatNumber(options.timeout) +
                       " s; nothing was set");
            return kTimedOut;
    }
    if (!VehicleClient::getInstance()->setInt32Property(static_cast<int>(property.id), value)) {
        printError("the vehicle client refused to set " + property.name);
        return kFailed;
    }
    const auto never = [] { return false; };
    if (follower.until(never, kDeliverySeconds) == Awaited::Stop) {
        return kFailed;
    }
    if (!goal) {
        return kDone;
    }
    switch (follower.until([&] { return reached(states, *goal); }, options.timeout)) {
        case Awaited::Updates:
            return kDone;
        case Awaited::Stop:
            return kFailed;
        case Awaited::Deadline:
            break;
    }
    printError(goal->property->name + " is " + valueText(states.of(*goal->property)) + " after " +
               formatNumber(options.timeout) + " s, not " + formatNumber(goal->value));
    return kTimedOut;
}

}  // namespace qvn::tools
