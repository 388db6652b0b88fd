#pragma once

#include <vehicle/VehicleState.h>

#include <map>
#include <string>

#include "desk/PropertyNames.h"

namespace qvn::tools {

constexpr long kSecond = 1'000'000'000;

/// Updates as a session brings them.
class Updates {
public:
    using State = platform::vehicle::PropertyState;
    using Origin = platform::vehicle::ValueOrigin;
    using Reception = platform::vehicle::Reception;

    /// @param at seconds
    State value(const std::string& name, double number, double at, int direction = 0, Origin origin = Origin::Can) {
        State& state = mStates[propertyNamed(name).id];
        state.timestamp = static_cast<long>(at * kSecond);
        state.payload = number;
        state.direction = direction;
        state.origin = origin;
        return reception(name, Reception::Received);
    }
    State reception(const std::string& name, Reception reception) {
        const PropertyInfo& property = propertyNamed(name);
        State& state = mStates[property.id];
        state.property = static_cast<int>(property.id);
        state.reception = reception;
        return state;
    }

private:
    std::map<std::uint32_t, State> mStates;
};

}  // namespace qvn::tools
