#include "can-service-sim/Generator.h"

#include <algorithm>
#include <cmath>

#include "desk/BadInput.h"
#include "desk/Number.h"
#include "desk/PhysicalValue.h"
#include "desk/SignalNotes.h"
#include "desk/Text.h"

namespace qvn::tools {
namespace {

constexpr double kPi = 3.14159265358979323846;

/// A number that looks drawn at random, the same for the same seed and place (the finalizer of SplitMix64).
double randomAt(std::uint64_t seed, std::uint64_t place) {
    std::uint64_t bits = (seed << 32U) + (place + 1) * 0x9E3779B97F4A7C15U;
    bits = (bits ^ bits >> 30U) * 0xBF58476D1CE4E5B9U;
    bits = (bits ^ bits >> 27U) * 0x94D049BB133111EBU;
    return static_cast<double>((bits ^ bits >> 31U) >> 11U) / 9007199254740992.0;  // of 2^53
}

std::vector<double> readValues(std::string_view text, std::string_view separator, std::uint32_t code) {
    std::vector<double> values;
    std::size_t begin = 0;
    for (;;) {
        const std::size_t end = text.find(separator, begin);
        values.push_back(parseValue(code, text.substr(begin, end - begin), "a physical value"));
        if (end == std::string_view::npos) {
            return values;
        }
        begin = end + separator.size();
    }
}

std::vector<double> readRange(std::string_view text, std::uint32_t code) {
    const std::vector<double> range = readValues(text, "..", code);
    if (range.size() != 2) {
        throw BadInput(tools::quoted(text) + " is not a range; expected FROM..TO");
    }
    return range;
}

}  // namespace

std::uint64_t periodsIn(double duration, double period) {
    // Whole multiples of a period are met by floats almost.
    return static_cast<std::uint64_t>(std::max(1.0, std::ceil(duration / period - 1e-6)));
}

bool Generator::isName(std::string_view text) {
    return text == "ramp" || text == "sine" || text == "step" || text == "random";
}

Generator Generator::read(std::string_view name, const tables::DecodingRow& row, TraceWords& words) {
    Generator generator(row);
    const std::string_view values = words.next();
    generator.mValues = name == "step" ? readValues(values, ",", row.code) : readRange(values, row.code);
    for (const double value : generator.mValues) {
        encodePhysical(row, value);
    }
    if (name == "sine") {
        generator.mKind = Kind::Sine;
        generator.mOver = words.expectSeconds("over", "the seconds of one wave");
    } else if (name == "step") {
        generator.mKind = Kind::Step;
    } else if (name == "random") {
        generator.mKind = Kind::Random;
        if (words.take("seed")) {
            generator.mSeed = static_cast<std::uint64_t>(std::fabs(parseNumber(words.next(), "a seed")));
        }
    }
    const Repetition repetition = words.repetition();
    generator.mPeriod = repetition.period.value_or(generator.mPeriod);
    generator.mDuration = repetition.duration;
    if (name == "ramp" && !generator.mDuration) {
        generator.mDuration = words.expectSeconds("for", "the ramp's duration in seconds");
    }
    return generator;
}

double Generator::valueAt(std::uint64_t tick) const {
    const double low = mValues.front();
    const double high = mValues.back();
    const double exact = static_cast<double>(tick) * mPeriod;
    const double time = mDuration ? std::min(exact, *mDuration) : exact;
    switch (mKind) {
        case Kind::Ramp:
            return low + (high - low) * time / *mDuration;
        case Kind::Sine:
            return low + (high - low) * (0.5 - 0.5 * std::cos(2.0 * kPi * time / mOver));
        case Kind::Step:
            return mValues[tick % mValues.size()];
        case Kind::Random:
            return low + (high - low) * randomAt(mSeed, tick);
    }
    return low;
}

std::string Generator::rawAt(std::uint64_t tick) const {
    const double value = valueAt(tick);
    const bool whole = mRow->kind != tables::ValueKind::Float && mRow->factor == 1.0;
    return encodePhysical(*mRow, whole ? std::round(value) : value);
}

}  // namespace qvn::tools
