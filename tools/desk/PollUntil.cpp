#include "desk/PollUntil.h"

#include <algorithm>
#include <ctime>

namespace qvn::tools {

Clock::time_point inSeconds(double seconds) {
    return Clock::now() + std::chrono::ceil<Clock::duration>(std::chrono::duration<double>(seconds));
}

int pollUntil(pollfd* fds, std::size_t count, std::optional<Clock::time_point> end) {
    timespec timeout{};
    if (end) {
        const auto left = std::max(*end - Clock::now(), Clock::duration::zero());
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
        timeout.tv_sec = seconds.count();
        timeout.tv_nsec = std::chrono::nanoseconds(left - seconds).count();
    }
    return ppoll(fds, count, end ? &timeout : nullptr, nullptr);
}

}  // namespace qvn::tools
