#pragma once

#include <optional>

#include "can-service-sim/VehicleTime.h"

namespace qvn::tools {

/// Watches a CAN message whose signals are on a cycle, as the CAN service does: when nothing of it was received for
/// five periods (the longest of its signals) it has timed out, and the next signal of it ends the time-out.
class MessageSupervisor {
public:
    /// A signal of the message was received. With a period, when it is on a cycle, the message is watched from now on.
    /// @return whether this ended a time-out
    bool received(VehicleTime now, double period = 0.0);

    /// The user gives the status by hand. Such a time-out lasts until it is ended by hand. After that the message is
    /// not watched until the next signal that is on a cycle.
    void setByHand(bool timedOut);

    /// When the message times out unless it is received before.
    std::optional<VehicleTime> deadline() const;
    /// The deadline has come.
    void timeOut() { mTimedOut = true; }

private:
    double mPeriod = 0.0;  // 0: not watched
    VehicleTime mDeadline{0};
    bool mTimedOut = false;
    bool mByHand = false;
};

}  // namespace qvn::tools
