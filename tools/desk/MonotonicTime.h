#pragma once

#include "sync/MonotonicTime.h"

namespace qvn::tools {

constexpr double kNanosecondsPerSecond = 1e9;

/// CLOCK_MONOTONIC in nanoseconds: the clock of the values' time stamps.
inline long monotonicNow() {
    return sync::monotonicTime();
}

}  // namespace qvn::tools
