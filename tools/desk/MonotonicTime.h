#pragma once

#include <ctime>

namespace qvn::tools {

constexpr double kNanosecondsPerSecond = 1e9;

/// CLOCK_MONOTONIC in nanoseconds: the clock of the values' time stamps.
inline long monotonicNow() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1'000'000'000L + now.tv_nsec;
}

}  // namespace qvn::tools
