#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "desk/PropertyNames.h"
#include "vehiclectl/Arrivals.h"
#include "vehiclectl/FirstValues.h"
#include "vehiclectl/PropertyFeed.h"

namespace qvn::tools {

/// What is known of one property. Times are CLOCK_MONOTONIC in ns; 0: never.
struct PropertyState {
    const PropertyInfo* info = nullptr;
    std::optional<platform::vehicle::VehiclePropValue> value;
    bool timedOut = false;
    bool stale = false;    ///< the service has gone since it last said something of it
    bool first = true;     ///< the service gave the value when this client connected; it may have it for long
    long changedAt = 0;    ///< when its number became another one than before
    long activeSince = 0;  ///< since when it has changed at least every few seconds
    Arrivals arrivals;
};

/// "4.5 km/h", "2 R", "1 dir. 1002" for a steering-wheel switch, "-" while there is no value.
std::string valueText(const PropertyState& state);

/// "available", "timed out" or "stale".
const char* statusText(const PropertyState& state);

/// One JSON object, without line end.
std::string jsonText(const PropertyState& state);

/// Seconds since the value was received, to now; negative when there is none. The vehicle's value is older than this
/// when it is the first one.
double ageOf(const PropertyState& state, long now);

/// "3.2 s", ">3.2 s" for a first value, empty when there is no value; with so many digits after the point.
std::string ageText(const PropertyState& state, long now, int digits = 1);

/// The value as a number; nothing while there is none.
std::optional<double> numberOf(const PropertyState& state);
std::optional<double> numberOf(const platform::vehicle::VehiclePropValue& value);

/// Whether the CAN service is there, as far as the tool's own link to it knows.
struct ServiceState {
    bool up = false;
    long since = 0;  ///< CLOCK_MONOTONIC, ns; 0: it was never there
};

/// The states of the properties that a command looks at.
class PropertyStates {
public:
    explicit PropertyStates(const std::vector<const PropertyInfo*>& properties);

    /// Takes an update in. The state of which it tells a new value or status; null when it is of another property or of
    /// the service, tells nothing new, or is older than what is known.
    const PropertyState* apply(Update update);

    /// Whether every property has a value.
    bool complete() const;

    const PropertyState& of(const PropertyInfo& property) const { return states_.at(static_cast<int>(property.id)); }
    const ServiceState& service() const { return service_; }

    /// The identifiers, as VehicleClient takes them.
    std::vector<int> ids() const;

private:
    void serviceChanged(const Update& update);

    std::map<int, PropertyState> states_;
    ServiceState service_;
    FirstValues first_;
    long lostAt_ = 0;
};

}  // namespace qvn::tools
