#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace qvn::tools {

/// Watches the CAN messages whose signals are on a cycle, as the CAN service does: a message of which nothing was
/// received for five periods (the longest of its signals) has timed out, and the next signal of it ends the time-out.
/// Times are seconds of one steady clock.
class MessageSupervisor {
public:
    /// A signal of the message was received. With a period, when it is on a cycle, the message is watched from now on.
    /// @return whether this ended a time-out
    bool received(std::uint32_t message, double now, double period = 0.0);

    /// The user gives the status by hand. Such a time-out lasts until it is ended by hand. After that the message is
    /// not watched until the next signal that is on a cycle.
    void setByHand(std::uint32_t message, bool timedOut);

    /// The messages that have timed out since the last call.
    std::vector<std::uint32_t> newlyTimedOut(double now);

    /// When the next message times out unless it is received before.
    std::optional<double> nextDeadline() const;

private:
    struct Watched {
        double period = 0.0;
        double deadline = 0.0;
        bool timedOut = false;
        bool byHand = false;
    };

    std::map<std::uint32_t, Watched> messages_;
};

}  // namespace qvn::tools
