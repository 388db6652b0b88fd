#include "can-service-sim/MessageSupervisor.h"

#include <algorithm>

namespace qvn::tools {
namespace {

constexpr double kPeriodsToTimeOut = 5.0;

}  // namespace

bool MessageSupervisor::received(VehicleTime now, double period) {
    period_ = std::max(period_, period);
    deadline_ = now + vehicleTime(kPeriodsToTimeOut * period_);
    if (byHand_) {
        return false;
    }
    const bool restored = timedOut_;
    timedOut_ = false;
    return restored;
}

void MessageSupervisor::setByHand(bool timedOut) {
    if (timedOut) {
        byHand_ = true;
    } else {
        *this = {};
    }
}

std::optional<VehicleTime> MessageSupervisor::deadline() const {
    return period_ > 0.0 && !byHand_ && !timedOut_ ? std::optional(deadline_) : std::nullopt;
}

}  // namespace qvn::tools
