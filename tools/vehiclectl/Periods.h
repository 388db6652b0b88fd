#pragma once

namespace qvn::tools {

/// The periods between the values of one property, in ms.
class Periods {
public:
    /// A value that came at this time, CLOCK_MONOTONIC in ns.
    void add(long at);

    /// How many periods there are; with none the figures below mean nothing.
    int count() const { return count_; }
    /// Values a second.
    double rate() const { return 1e3 / mean_; }
    double mean() const { return mean_; }
    double shortest() const { return shortest_; }
    double longest() const { return longest_; }
    double deviation() const;

private:
    long last_ = 0;
    int count_ = 0;
    double mean_ = 0.0, squares_ = 0.0, shortest_ = 0.0, longest_ = 0.0;
};

}  // namespace qvn::tools
