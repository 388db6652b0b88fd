#ifndef VEHICLE_VEHICLE_STATE_H
#define VEHICLE_VEHICLE_STATE_H

#include <vehicle/VehicleProperty.h>

#include <cmath>
#include <cstdint>
#include <limits>

namespace qvn {
namespace platform {
namespace vehicle {

/// How a property is received at present.
enum class Reception : std::int32_t {
    NeverReceived,  ///< there is no value
    Received,       ///< the value is the present one
    TimedOut,       ///< the CAN message that carries it is no longer received; the value, if any, is the last known one
    ServiceAway     ///< the CAN service has gone since it was last heard of; the value is the last known one
};

/// "never received", "received", "timed out" or "without service": for a log or a screen.
inline const char* receptionText(Reception reception) {
    switch (reception) {
        case Reception::NeverReceived:
            return "never received";
        case Reception::Received:
            return "received";
        case Reception::TimedOut:
            return "timed out";
        case Reception::ServiceAway:
            return "without service";
    }
    return "unknown";
}

/// Who said what the value is.
enum class ValueOrigin : std::int32_t {
    Can,         ///< the CAN service
    ReverseLine  ///< the library, which made it from the reverse line since CAN had not been reached yet
};

/// What is known of one property at one moment. A plain value: copying it allocates nothing.
struct PropertyState {
    int property = 0;                           ///< the identifier, see <vehicle/PropertyIds.h>
    PropertyType type = PROPERTY_TYPE_UNKNOWN;  ///< as the vehicle carries it; the accessors read every type
    Reception reception = Reception::NeverReceived;
    ValueOrigin origin = ValueOrigin::Can;
    long timestamp = 0;          ///< CLOCK_MONOTONIC in ns when the value was received; 0: never
    std::int32_t direction = 0;  ///< which of several steering-wheel switches the value is of; 0 for other properties
    /// How many updates the handler has not been given since the one before, because it was too slow for its queue.
    unsigned long missed = 0;
    /// The value itself, in the unit of the remark in <vehicle/PropertyIds.h>; not a number: there is none.
    double payload = std::numeric_limits<double>::quiet_NaN();

    bool hasValue() const { return !std::isnan(payload); }
    /// Whether the value is the vehicle's present one.
    bool isCurrent() const { return reception == Reception::Received; }
    /// The value, or `otherwise` when there is none.
    double number(double otherwise = std::numeric_limits<double>::quiet_NaN()) const {
        return hasValue() ? payload : otherwise;
    }
    /// The value with its fraction cut off, or `otherwise` when there is none or it does not fit.
    std::int32_t integer(std::int32_t otherwise = 0) const {
        const bool fits = payload > -2147483649.0 && payload < 2147483648.0;
        return fits ? static_cast<std::int32_t>(payload) : otherwise;
    }
};

/// Whether the CAN service is there.
enum class ServicePresence : std::int32_t {
    NeverThere,  ///< it has not been reached yet
    There,
    Gone  ///< it was there; the library connects again by itself when it is back
};

struct ServiceState {
    ServicePresence presence = ServicePresence::NeverThere;
    /// Since when, CLOCK_MONOTONIC in ns. NeverThere: since the library looks for it.
    long since = 0;
};

}  // namespace vehicle
}  // namespace platform
}  // namespace qvn

#endif  // VEHICLE_VEHICLE_STATE_H
