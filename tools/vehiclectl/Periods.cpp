#include "vehiclectl/Periods.h"

#include <algorithm>
#include <cmath>

namespace qvn::tools {
namespace {

constexpr double kMillisecond = 1e6;  // ns

}  // namespace

void Periods::add(long at) {
    if (last_ != 0 && at > last_) {
        const double period = static_cast<double>(at - last_) / kMillisecond;
        shortest_ = count_ == 0 ? period : std::min(shortest_, period);
        longest_ = std::max(longest_, period);
        ++count_;
        // Welford's way to a variance in one pass.
        const double distance = period - mean_;
        mean_ += distance / count_;
        squares_ += distance * (period - mean_);
    }
    last_ = at;
}

double Periods::deviation() const {
    return std::sqrt(squares_ / count_);
}

}  // namespace qvn::tools
