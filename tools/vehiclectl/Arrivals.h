#pragma once

#include <array>
#include <cstddef>

namespace qvn::tools {

/// The times at which the last values of a property came, for its rate. Times are CLOCK_MONOTONIC in ns.
class Arrivals {
public:
    void add(long at) {
        times_[count_ % times_.size()] = at;
        ++count_;
    }

    /// Values a second, of the last ones within five seconds; 0 when there are fewer than two.
    double rate(long now) const;

private:
    std::array<long, 32> times_ = {};
    std::size_t count_ = 0;
};

}  // namespace qvn::tools
