#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "vehicle/VehicleProperty.h"

namespace qvn::tools {

/// One property of the vehicle, with the signals that feed it or are fed by it.
struct PropertyInfo {
    std::uint32_t id = 0;
    platform::vehicle::PropertyType type = {};
    std::vector<std::uint32_t> received;  ///< code ids of the signals that feed it
    std::vector<std::uint32_t> settable;  ///< code ids of the signals that a set of it sends
    std::string name;                     ///< its signal; "CSA3_*" where several signals share it
};

/// All properties, in table order.
const std::vector<PropertyInfo>& properties();

/// The property with this identifier, or null.
const PropertyInfo* findProperty(std::uint32_t id);

/// The property that the user named by its identifier (0x21600E1F) or by a signal, with or without prefix.
/// @throws BadInput for an unknown one, with the closest names
const PropertyInfo& propertyNamed(std::string_view text);

/// The name of the switch with this direction code among the property's signals; empty when there is none.
std::string switchName(const PropertyInfo& property, std::int32_t direction);

}  // namespace qvn::tools
