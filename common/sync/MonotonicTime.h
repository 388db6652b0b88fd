#ifndef SYNC_MONOTONIC_TIME_H
#define SYNC_MONOTONIC_TIME_H

#include <ctime>

namespace qvn {
namespace sync {

/// CLOCK_MONOTONIC in ns, as values are stamped; 0 when it cannot be read. A standard library's steady clock may count
/// from elsewhere.
inline long monotonicTime() {
    timespec now{};
    return clock_gettime(CLOCK_MONOTONIC, &now) == 0 ? now.tv_sec * 1000000000L + now.tv_nsec : 0;
}

}  // namespace sync
}  // namespace qvn

#endif  // SYNC_MONOTONIC_TIME_H
