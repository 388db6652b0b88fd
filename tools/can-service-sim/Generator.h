#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "can-service-sim/trace/TraceWords.h"
#include "tables/DecodingRules.h"

namespace qvn::tools {

/// How many periods a duration has: one at least, a part of one counted as one.
std::uint64_t periodsIn(double duration, double period);

/// A course of a signal's value over time, sent every `period` seconds: at its ticks, of which 0 is its begin.
class Generator {
public:
    /// Whether a value of a trace is the name of a course: ramp, sine, step or random.
    static bool isName(std::string_view text);

    /// Reads what follows the name.
    ///     ramp A..B for D    sine A..B over T    step A,B,...    random A..B [seed N]
    /// each with [every P] and [for D], in either order.
    /// @throws BadInput for what is wrong, also for values that the signal cannot carry
    static Generator read(std::string_view name, const tables::DecodingRow& row, TraceWords& words);

    double period() const { return mPeriod; }
    /// Nothing for a course without end.
    std::optional<double> duration() const { return mDuration; }
    std::optional<std::uint64_t> lastTick() const {
        return mDuration ? std::optional(periodsIn(*mDuration, mPeriod)) : std::nullopt;
    }
    /// Whether the last value is sent on and on after the end: a ramp leads to a new value.
    bool holds() const { return mKind == Kind::Ramp; }

    /// The raw bytes; after the end, those of the end.
    std::string rawAt(std::uint64_t tick) const;

private:
    enum class Kind { Ramp, Sine, Step, Random };

    explicit Generator(const tables::DecodingRow& row) : mRow(&row) {}
    double valueAt(std::uint64_t tick) const;

    const tables::DecodingRow* mRow;
    Kind mKind = Kind::Ramp;
    std::vector<double> mValues;  // from and to; of a step, each in turn
    double mOver = 0.0;           // seconds of one wave
    std::uint64_t mSeed = 1;
    double mPeriod = 0.05;
    std::optional<double> mDuration;
};

}  // namespace qvn::tools
