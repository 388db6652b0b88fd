#include "vehiclectl/Health.h"

#include "desk/SignalNames.h"

namespace qvn::tools {

Findings Health::findings(double seconds) const {
    Findings found;
    found.properties = mProperties.size();
    found.rate = static_cast<double>(mTraffic) / seconds;
    for (const PropertyInfo* const property : mProperties) {
        const PropertyState& state = mTable.of(*property).state;
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
