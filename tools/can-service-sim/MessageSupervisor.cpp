#include "can-service-sim/MessageSupervisor.h"

#include <algorithm>

namespace qvn::tools {
namespace {

constexpr double kPeriodsToTimeOut = 5.0;

}  // namespace

bool MessageSupervisor::received(std::uint32_t message, double now, double period) {
    const auto found = messages_.find(message);
    if (found == messages_.end() && period <= 0.0) {
        return false;
    }
    Watched& watched = messages_[message];
    watched.period = std::max(watched.period, period);
    watched.deadline = now + kPeriodsToTimeOut * watched.period;
    if (watched.byHand) {
        return false;
    }
    const bool restored = watched.timedOut;
    watched.timedOut = false;
    return restored;
}

void MessageSupervisor::setByHand(std::uint32_t message, bool timedOut) {
    if (timedOut) {
        messages_[message].byHand = true;
    } else {
        messages_.erase(message);
    }
}

std::vector<std::uint32_t> MessageSupervisor::newlyTimedOut(double now) {
    std::vector<std::uint32_t> result;
    for (auto& [message, watched] : messages_) {
        if (!watched.byHand && !watched.timedOut && watched.deadline <= now) {
            watched.timedOut = true;
            result.push_back(message);
        }
    }
    return result;
}

std::optional<double> MessageSupervisor::nextDeadline() const {
    std::optional<double> next;
    for (const auto& [message, watched] : messages_) {
        if (!watched.byHand && !watched.timedOut) {
            next = next ? std::min(*next, watched.deadline) : watched.deadline;
        }
    }
    return next;
}

}  // namespace qvn::tools
