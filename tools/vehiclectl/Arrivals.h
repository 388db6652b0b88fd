#pragma once

#include <array>
#include <cstddef>

namespace qvn::tools {

/// The times at which the last values of a property came, for its rate. Times are CLOCK_MONOTONIC in ns.
class Arrivals {
public:
    void add(long at) {
        mTimes[mCount % mTimes.size()] = at;
        ++mCount;
    }

    /// Values a second, of the last ones within five seconds; 0 when there are fewer than two.
    double rate(long now) const;

private:
    std::array<long, 32> mTimes = {};
    std::size_t mCount = 0;
};

}  // namespace qvn::tools
