#include "can-service-sim/MessageSupervisor.h"

#include <algorithm>

namespace qvn::tools {
namespace {

constexpr double kPeriodsToTimeOut = 5.0;

}  // namespace

bool MessageSupervisor::received(VehicleTime now, double period) {
    mPeriod = std::max(mPeriod, period);
    mDeadline = now + vehicleTime(kPeriodsToTimeOut * mPeriod);
    if (mByHand) {
        return false;
    }
    const bool restored = mTimedOut;
    mTimedOut = false;
    return restored;
}

void MessageSupervisor::setByHand(bool timedOut) {
    if (timedOut) {
        mByHand = true;
    } else {
        *this = {};
    }
}

std::optional<VehicleTime> MessageSupervisor::deadline() const {
    return mPeriod > 0.0 && !mByHand && !mTimedOut ? std::optional(mDeadline) : std::nullopt;
}

}  // namespace qvn::tools
