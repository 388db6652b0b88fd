#include "vehiclectl/SetGoal.h"

#include <cmath>
#include <string_view>
#include <vector>

#include "desk/BadInput.h"
#include "desk/PhysicalValue.h"
#include "desk/SignalNotes.h"
#include "desk/Text.h"
#include "vehiclectl/PropertySelection.h"

namespace qvn::tools {

std::int32_t valueToSet(const PropertyInfo& property, const std::string& text) {
    if (property.settable.empty()) {
        throw BadInput(property.name + " is only reported by the vehicle; it cannot be set");
    }
    const std::uint32_t code = property.settable.front();
    const double value = parseValue(code, text, "the value to set");
    const tables::SetRange range = setRange(*tables::findSetSignal(code));
    if (value != std::floor(value) || value < range.low || value > range.high) {
        throw BadInput("value " + text + " does not fit " + property.name + "; expected a whole number from " +
                       std::to_string(range.low) + " to " + std::to_string(range.high));
    }
    return static_cast<std::int32_t>(value);
}

Goal readGoal(const std::string& text) {
    const std::size_t mark = text.find('=');
    if (mark == std::string::npos) {
        throw BadInput(tools::quoted(text) + " is nothing to wait for; expected PROPERTY=VALUE");
    }
    const std::string_view value = std::string_view(text).substr(mark + 1);
    const std::vector<const PropertyInfo*> meant = receivedProperties({text.substr(0, mark)});
    if (meant.size() > 1) {
        throw BadInput(tools::quoted(text) + " means " + std::to_string(meant.size()) +
                       " properties; expected one to wait for");
    }
    return {meant.front(), parseValue(meant.front()->received.front(), value, "a value after '='")};
}

}  // namespace qvn::tools
