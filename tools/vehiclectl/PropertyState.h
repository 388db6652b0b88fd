#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "desk/PropertyNames.h"
#include "vehiclectl/PropertyFeed.h"

namespace qvn::tools {

/// What is known of one property.
struct PropertyState {
    const PropertyInfo* info = nullptr;
    std::optional<platform::vehicle::VehiclePropValue> value;
    bool timedOut = false;
    long changedAt = 0;  ///< CLOCK_MONOTONIC of the last change, ns; 0: never
};

/// "4.5", "1 direction 1002" for a steering-wheel switch, "-" while there is no value.
std::string valueText(const PropertyState& state);

/// "available" or "timed out".
const char* statusText(const PropertyState& state);

/// One JSON object, without line end.
std::string jsonText(const PropertyState& state);

/// Seconds since the value was received, to now (CLOCK_MONOTONIC, ns); negative when there is none.
double ageOf(const PropertyState& state, long now);

/// The value as a number; nothing while there is none.
std::optional<double> numberOf(const PropertyState& state);

/// CLOCK_MONOTONIC, ns: the clock of the values' timestamps.
long monotonicNow();

/// The states of the properties that a command looks at.
class PropertyStates {
public:
    explicit PropertyStates(const std::vector<const PropertyInfo*>& properties);

    /// Takes an update in. The state that it changed; null when it is of another property, tells nothing new, or is
    /// older than what is known.
    const PropertyState* apply(Update update);

    /// Whether every property has a value.
    bool complete() const;

    const PropertyState& of(const PropertyInfo& property) const { return states_.at(static_cast<int>(property.id)); }

    /// The identifiers, as VehicleClient takes them.
    std::vector<int> ids() const;

private:
    std::map<int, PropertyState> states_;
};

}  // namespace qvn::tools
