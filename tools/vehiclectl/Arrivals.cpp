#include "vehiclectl/Arrivals.h"

#include <algorithm>

#include "desk/MonotonicTime.h"

namespace qvn::tools {
namespace {

constexpr long kWindow = 5'000'000'000;

}  // namespace

double Arrivals::rate(long now) const {
    const std::size_t known = std::min(mCount, mTimes.size());
    std::size_t used = 0;
    long first = 0;
    while (used < known && now - mTimes[(mCount - 1 - used) % mTimes.size()] < kWindow) {
        first = mTimes[(mCount - 1 - used) % mTimes.size()];
        ++used;
    }
    if (used < 2) {
        return 0.0;
    }
    const long last = mTimes[(mCount - 1) % mTimes.size()];
    const double mean = static_cast<double>(last - first) / static_cast<double>(used - 1);
    // A signal that has stopped slows down to the eye, too.
    const double period = std::max(mean, static_cast<double>(now - last) / 2.0);
    return period > 0.0 ? kNanosecondsPerSecond / period : 0.0;
}

}  // namespace qvn::tools
