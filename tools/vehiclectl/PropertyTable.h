#pragma once

#include <vehicle/VehicleState.h>

#include <map>
#include <set>
#include <string>
#include <vector>

#include "desk/PropertyNames.h"
#include "vehiclectl/Arrivals.h"

namespace qvn::tools {

using platform::vehicle::PropertyState;

/// For so long after a change of its number a property is active; ns.
constexpr long kActiveFor = 3'000'000'000;

/// What is known of one property. Times are CLOCK_MONOTONIC in ns; 0: never.
struct PropertyRow {
    const PropertyInfo* info = nullptr;
    PropertyState state;
    bool first = true;     ///< the service gave the value when this client connected; it may have it for long
    long changedAt = 0;    ///< when its number became another one than before
    long activeSince = 0;  ///< since when it has changed at least every few seconds
    Arrivals arrivals;
};

/// "4.5 km/h", "2 R", "1 dir. 1002" for a steering-wheel switch, "-" while there is no value.
std::string valueText(const PropertyInfo& property, const PropertyState& state);

/// "available", "timed out" or "stale".
const char* statusText(const PropertyState& state);

/// One JSON object, without line end.
std::string jsonText(const PropertyRow& row);

/// Seconds since the value was received, to now: "3.2 s", ">3.2 s" for a first value, since the vehicle's value is
/// older than that; empty when there is no value. With so many digits after the point.
std::string ageText(const PropertyRow& row, long now, int digits = 1);

/// The state without a value that the library made of the reverse line.
PropertyState withoutReverseLine(PropertyState state);

/// What an update has told of a property.
struct News {
    bool repeated = false;  ///< a value was received that is not the first one
    bool changed = false;   ///< the value, or whether it is timed out, has become another one
};

/// The properties that a command looks at.
class PropertyTable {
public:
    explicit PropertyTable(const std::vector<const PropertyInfo*>& properties);

    /// Takes an update of one of the properties in. They come in the order in which they happened.
    News apply(const PropertyState& update);

    /// Whether every property has a value.
    bool complete() const;

    const PropertyRow& of(int property) const { return mRows.at(property); }
    const PropertyRow& of(const PropertyInfo& property) const { return of(static_cast<int>(property.id)); }

private:
    bool isFirst(const PropertyState& value);

    std::map<int, PropertyRow> mRows;
    std::map<int, std::set<int>> mHeard;  // by property: the sources of its values, on this connection
};

}  // namespace qvn::tools
