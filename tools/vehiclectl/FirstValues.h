#pragma once

#include <algorithm>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include "vehiclectl/PropertyFeed.h"

namespace qvn::tools {

/// Tells the values that the service has had for long, which all come when a client connects, from those that it sends
/// afterwards.
class FirstValues {
public:
    /// The service has gone; when it is back, its values are first ones again.
    void lose(long at) { lostAt_ = at; }

    /// Whether a value is the first one of its property, or of its switch where several share the property; or one that
    /// has come already.
    bool take(const Update& update) {
        const std::vector<std::int32_t>& numbers = update.value.value.int32Values;
        long& last = last_[{update.property, numbers.size() == 2 ? numbers[1] : 0}];
        const bool first = last <= lostAt_ || update.at <= last;
        last = std::max(last, update.at);
        return first;
    }

private:
    std::map<std::pair<int, std::int32_t>, long> last_;  // by property and direction; CLOCK_MONOTONIC, ns
    long lostAt_ = 0;
};

}  // namespace qvn::tools
