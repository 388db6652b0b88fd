#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "vehiclectl/PropertyTable.h"

namespace qvn::tools {

/// What `status` tells.
struct Findings {
    std::size_t properties = 0;
    std::size_t withValue = 0;
    double rate = 0.0;  ///< values a second
    std::set<std::string> messages;
    std::set<std::string> timedOut;  ///< of the messages
};

/// Looks at what comes of these properties.
class Health {
public:
    explicit Health(const std::vector<const PropertyInfo*>& properties) : mProperties(properties), mTable(properties) {}

    void take(const PropertyState& update) { mTraffic += mTable.apply(withoutReverseLine(update)).repeated ? 1U : 0U; }

    /// @param seconds for which it has looked
    Findings findings(double seconds) const;

private:
    const std::vector<const PropertyInfo*> mProperties;
    PropertyTable mTable;
    std::size_t mTraffic = 0;
};

}  // namespace qvn::tools
