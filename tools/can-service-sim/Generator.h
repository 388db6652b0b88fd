#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "can-service-sim/TraceWords.h"
#include "tables/DecodingRules.h"

namespace qvn::tools {

/// A course of a signal's value over time, sent every `period`. Times are seconds from its begin, at the trace's speed.
class Generator {
public:
    /// Whether a value of a trace is the name of a course: ramp, sine, step or random.
    static bool isName(std::string_view text);

    /// Reads what follows the name.
    ///     ramp A..B for D    sine A..B over T    step A,B,...    random A..B [seed N]
    /// each with [every P], all but the ramp with [for D].
    /// @throws BadInput for what is wrong, also for values that the signal cannot carry
    static Generator read(std::string_view name, const tables::DecodingRow& row, TraceWords& words);

    double period() const { return period_; }
    /// Nothing for a course without end.
    std::optional<double> duration() const { return duration_; }
    bool isOver(double time) const { return duration_ && time >= *duration_; }
    /// Whether the last value is sent on and on after the end: a ramp leads to a new value.
    bool holds() const { return kind_ == Kind::Ramp; }

    /// The raw bytes at that time; after the end, those of the end.
    std::string rawAt(double time) const;

private:
    enum class Kind { Ramp, Sine, Step, Random };

    explicit Generator(const tables::DecodingRow& row) : row_(&row) {}
    double valueAt(double time) const;

    const tables::DecodingRow* row_;
    Kind kind_ = Kind::Ramp;
    std::vector<double> values_;  // from and to; of a step, each in turn
    double over_ = 0.0;           // seconds of one wave
    std::uint64_t seed_ = 1;
    double period_ = 0.05;
    std::optional<double> duration_;
};

}  // namespace qvn::tools
