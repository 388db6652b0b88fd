#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "desk/PropertyNames.h"
#include "vehiclectl/PropertyFeed.h"

namespace qvn::tools {

constexpr long kSecond = 1'000'000'000;

// Updates as the client brings them; times are seconds.

inline Update valueOf(const std::string& name, std::vector<std::int32_t> numbers, double at,
                      Update::Origin origin = Update::Origin::Service) {
    Update update{Update::Kind::Value, origin, static_cast<int>(propertyNamed(name).id), {}};
    update.at = static_cast<long>(at * kSecond);
    update.value.timestamp = update.at;
    update.value.value.int32Values = std::move(numbers);
    return update;
}

inline Update statusOf(const std::string& name, bool good, double at) {
    const int property = static_cast<int>(propertyNamed(name).id);
    return {Update::Kind::Status, Update::Origin::Service, property, {}, good, static_cast<long>(at * kSecond)};
}

inline Update serviceIs(bool up, double at) {
    return {Update::Kind::Service, Update::Origin::Link, 0, {}, up, static_cast<long>(at * kSecond)};
}

}  // namespace qvn::tools
