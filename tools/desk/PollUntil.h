#pragma once

#include <poll.h>

#include <chrono>
#include <cstddef>
#include <optional>

namespace qvn::tools {

using Clock = std::chrono::steady_clock;

/// The point in time so many seconds from now.
Clock::time_point inSeconds(double seconds);

/// poll() to a point in time; without one it waits as long as it takes.
int pollUntil(pollfd* fds, std::size_t count, std::optional<Clock::time_point> end);

}  // namespace qvn::tools
