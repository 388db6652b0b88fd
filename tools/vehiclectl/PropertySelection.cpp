#include "vehiclectl/PropertySelection.h"

#include <algorithm>

#include "desk/BadInput.h"
#include "desk/Glob.h"
#include "desk/SignalNames.h"
#include "desk/Text.h"

namespace qvn::tools {
namespace {

std::vector<const PropertyInfo*> reported() {
    std::vector<const PropertyInfo*> result;
    for (const PropertyInfo& property : properties()) {
        if (!property.received.empty()) {
            result.push_back(&property);
        }
    }
    return result;
}

bool matches(const PropertyInfo& property, const std::string& pattern) {
    const auto isMatch = [&](std::uint32_t code) { return matchesGlob(withoutPrefix(pattern), signalName(code)); };
    return std::any_of(property.received.begin(), property.received.end(), isMatch);
}

/// What one argument of the user's stands for.
std::vector<const PropertyInfo*> propertiesMeant(const std::string& name) {
    if (name.find_first_of("*?") == std::string::npos) {
        const PropertyInfo& property = propertyNamed(name);
        if (property.received.empty()) {
            throw BadInput(property.name + " can only be set; the vehicle never reports it");
        }
        return {&property};
    }
    std::vector<const PropertyInfo*> result = reported();
    result.erase(std::remove_if(result.begin(), result.end(), [&](const auto* p) { return !matches(*p, name); }),
                 result.end());
    if (result.empty()) {
        throw BadInput("no property that the vehicle reports matches " + tools::quoted(name) +
                       "; 'vehiclectl list' shows them all");
    }
    return result;
}

}  // namespace

std::vector<const PropertyInfo*> receivedProperties(const std::vector<std::string>& names) {
    if (names.empty()) {
        return reported();
    }
    std::vector<const PropertyInfo*> result;
    for (const std::string& name : names) {
        for (const PropertyInfo* const property : propertiesMeant(name)) {
            if (std::find(result.begin(), result.end(), property) == result.end()) {
                result.push_back(property);
            }
        }
    }
    return result;
}

}  // namespace qvn::tools
