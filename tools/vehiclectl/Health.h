#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "vehiclectl/FirstValues.h"
#include "vehiclectl/PropertyState.h"

namespace qvn::tools {

/// What `status` tells.
struct Findings {
    bool up = false;
    std::size_t properties = 0;
    std::size_t withValue = 0;
    double rate = 0.0;  ///< values a second
    std::set<std::string> messages;
    std::set<std::string> timedOut;  ///< of the messages
};

/// Looks at what comes of these properties.
class Health {
public:
    explicit Health(const std::vector<const PropertyInfo*>& properties)
        : properties_(properties), states_(properties) {}

    /// The identifiers, as VehicleClient takes them.
    std::vector<int> ids() const { return states_.ids(); }

    void take(Update update);

    /// @param seconds for which it has looked
    Findings findings(double seconds) const;

private:
    const std::vector<const PropertyInfo*> properties_;
    PropertyStates states_;
    FirstValues first_;
    std::size_t traffic_ = 0;
};

}  // namespace qvn::tools
