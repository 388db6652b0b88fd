#pragma once

namespace qvn::test {

/// While one lives, CLOCK_MONOTONIC reads as told on the thread that made it; every other thread and clock is real.
class FakeClock {
public:
    FakeClock(long seconds, long nanoseconds);
    /// A clock that fails.
    FakeClock();
    ~FakeClock();
    FakeClock(const FakeClock&) = delete;
    FakeClock& operator=(const FakeClock&) = delete;
};

}  // namespace qvn::test
