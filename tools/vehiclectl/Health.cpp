#include "vehiclectl/Health.h"

#include "desk/SignalNames.h"

namespace qvn::tools {

Findings Health::findings(double seconds) const {
    Findings found;
    found.properties = properties_.size();
    found.rate = static_cast<double>(traffic_) / seconds;
    for (const PropertyInfo* const property : properties_) {
        const PropertyState& state = table_.of(*property).state;
        found.withValue += state.hasValue() ? 1U : 0U;
        for (const std::uint32_t code : property->received) {
            if (const auto message = messageOf(code)) {
                found.messages.insert(signalName(*message));
                if (state.reception == platform::vehicle::Reception::TimedOut) {
                    found.timedOut.insert(signalName(*message));
                }
            }
        }
    }
    return found;
}

}  // namespace qvn::tools
