#pragma once

#include <cstdint>
#include <string>

#include "desk/PropertyNames.h"

namespace qvn::tools {

/// The number to set that the user wrote: a number, or the name of a value.
/// @throws BadInput for a property that cannot be set, or a number that does not fit it
std::int32_t valueToSet(const PropertyInfo& property, const std::string& text);

/// What a set is to bring about: a value of a property; without one, nothing in particular.
struct Goal {
    const PropertyInfo* property = nullptr;
    double value = 0.0;
};

/// @param text PROPERTY=VALUE
/// @throws BadInput
Goal readGoal(const std::string& text);

}  // namespace qvn::tools
