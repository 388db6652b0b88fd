#pragma once

namespace qvn::tools {

/// The periods between the values of one property, in ms.
class Periods {
public:
    /// A value that came at this time, CLOCK_MONOTONIC in ns.
    void add(long at);

    /// How many periods there are; with none the figures below mean nothing.
    int count() const { return mCount; }
    /// Values a second.
    double rate() const { return 1e3 / mMean; }
    double mean() const { return mMean; }
    double shortest() const { return mShortest; }
    double longest() const { return mLongest; }
    double deviation() const;

private:
    long mLast = 0;
    int mCount = 0;
    double mMean = 0.0, mSquares = 0.0, mShortest = 0.0, mLongest = 0.0;
};

}  // namespace qvn::tools
