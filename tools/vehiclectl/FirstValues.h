#pragma once

#include <set>
#include <utility>
#include <vector>

#include "vehiclectl/PropertyFeed.h"

namespace qvn::tools {

/// Tells the values that the service has had for long, which all come when a client connects, from those that tell how
/// often it sends.
class FirstValues {
public:
    /// Whether the service sent this value while it was looked at. The first one of a property is none of these, nor is
    /// that of each switch that shares a property with others.
    bool isTraffic(const Update& update) {
        const std::vector<std::int32_t>& numbers = update.value.value.int32Values;
        const bool isSwitch = numbers.size() == 2;
        return update.kind == Update::Kind::Value && update.origin == Update::Origin::Service &&
               !seen_.insert({update.property, isSwitch ? numbers[1] : 0}).second;
    }

private:
    std::set<std::pair<int, std::int32_t>> seen_;  // property, direction
};

}  // namespace qvn::tools
