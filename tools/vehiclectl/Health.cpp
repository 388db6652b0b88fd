#include "vehiclectl/Health.h"

#include <utility>

#include "desk/SignalNames.h"

namespace qvn::tools {

void Health::take(Update update) {
    if (update.kind == Update::Kind::Value && update.origin == Update::Origin::Service) {
        traffic_ += first_.take(update) ? 0U : 1U;
    } else if (update.kind == Update::Kind::Service && !update.good) {
        first_.lose(update.at);
    }
    if (update.origin != Update::Origin::ReverseLine) {
        states_.apply(std::move(update));
    }
}

Findings Health::findings(double seconds) const {
    Findings found;
    found.up = states_.service().up;
    found.properties = properties_.size();
    found.rate = static_cast<double>(traffic_) / seconds;
    for (const PropertyInfo* const property : properties_) {
        const PropertyState& state = states_.of(*property);
        found.withValue += state.value ? 1U : 0U;
        for (const std::uint32_t code : property->received) {
            if (const auto message = messageOf(code)) {
                found.messages.insert(signalName(*message));
                if (state.timedOut) {
                    found.timedOut.insert(signalName(*message));
                }
            }
        }
    }
    return found;
}

}  // namespace qvn::tools
