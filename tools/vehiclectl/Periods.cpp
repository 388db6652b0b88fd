#include "vehiclectl/Periods.h"

#include <algorithm>
#include <cmath>

namespace qvn::tools {
namespace {

constexpr double kMillisecond = 1e6;  // ns

}  // namespace

void Periods::add(long at) {
    if (mLast != 0 && at > mLast) {
        const double period = static_cast<double>(at - mLast) / kMillisecond;
        mShortest = mCount == 0 ? period : std::min(mShortest, period);
        mLongest = std::max(mLongest, period);
        ++mCount;
        // Welford's way to a variance in one pass.
        const double distance = period - mMean;
        mMean += distance / mCount;
        mSquares += distance * (period - mMean);
    }
    mLast = at;
}

double Periods::deviation() const {
    return std::sqrt(mSquares / mCount);
}

}  // namespace qvn::tools
