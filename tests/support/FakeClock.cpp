#include "support/FakeClock.h"

#include <sys/syscall.h>
#include <unistd.h>
#include <cerrno>
#include <ctime>

namespace qvn::test {

namespace {

enum class Mode { Real, Fixed, Failing };

thread_local Mode mode = Mode::Real;
thread_local timespec fixed{};

}  // namespace

FakeClock::FakeClock(long seconds, long nanoseconds) {
    fixed = {seconds, nanoseconds};
    mode = Mode::Fixed;
}

FakeClock::FakeClock() {
    mode = Mode::Failing;
}

FakeClock::~FakeClock() {
    mode = Mode::Real;
}

int readClock(clockid_t clock, timespec* out) {
    if (clock != CLOCK_MONOTONIC || mode == Mode::Real) {
        return static_cast<int>(syscall(SYS_clock_gettime, clock, out));
    }
    if (mode == Mode::Failing) {
        errno = EINVAL;
        return -1;
    }
    *out = fixed;
    return 0;
}

}  // namespace qvn::test

extern "C" __attribute__((visibility("default"))) int clock_gettime(clockid_t clock, timespec* out) noexcept {
    return qvn::test::readClock(clock, out);
}
