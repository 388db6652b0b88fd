#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "vehiclectl/PropertyState.h"

namespace qvn::tools {

/// The number to set that the user wrote: a number, or the name of a value.
/// @throws BadInput for a property that cannot be set, or a number that does not fit it
std::int32_t valueToSet(const PropertyInfo& property, const std::string& text);

/// What a set is to bring about: a value of a property.
struct Goal {
    const PropertyInfo* property = nullptr;
    double value = 0.0;
};

/// @param text PROPERTY=VALUE
/// @throws BadInput
Goal readGoal(const std::string& text);

/// Looks at the updates around a set.
class SetProgress {
public:
    explicit SetProgress(PropertyStates& states) : states_(states) {}

    void take(Update update);

    /// Whether the service has reported anything to the vehicle client.
    bool clientOnline() const { return clientOnline_; }

    /// From now on every update is looked at, so that a value which is there only for a moment counts; so does one that
    /// is there already.
    void lookFor(const Goal& goal);
    bool goalReached() const { return goalReached_; }

private:
    bool holds(const Goal& goal) const;

    PropertyStates& states_;
    std::optional<Goal> goal_;
    bool clientOnline_ = false;
    bool goalReached_ = false;
};

}  // namespace qvn::tools
