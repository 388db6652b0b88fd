#include "common/PhysicalValue.h"

#include <cmath>

#include "common/BadInput.h"

namespace qvn::tools {
namespace {

using tables::DecodingRule;
using tables::SetEncoding;

constexpr double kSpeedStep = 0.05625;
constexpr double kAngleStep = 0.1;
constexpr double kLargestWord = 65535.0;

bool isWord(DecodingRule rule) {
    return rule != DecodingRule::Byte && rule != DecodingRule::Switch;
}

bool isWord(SetEncoding encoding) {
    return encoding == SetEncoding::U16Be || encoding == SetEncoding::U16BePlus;
}

std::uint32_t bigEndian(const std::string& raw) {
    std::uint32_t number = 0;
    for (const char c : raw) {
        number = number << 8U | static_cast<unsigned char>(c);
    }
    return number;
}

std::string bytesOf(std::uint32_t number, bool word) {
    std::string raw;
    if (word) {
        raw += static_cast<char>(number >> 8U & 0xFFU);
    }
    raw += static_cast<char>(number & 0xFFU);
    return raw;
}

std::string rangeText(const PhysicalRange& range) {
    const std::string limits = formatNumber(range.low) + " to " + formatNumber(range.high);
    return (range.step < 1.0 ? "a number from " : "a whole number from ") + limits;
}

}  // namespace

PhysicalRange physicalRange(DecodingRule rule) {
    switch (rule) {
        case DecodingRule::Byte:
        case DecodingRule::Switch:
            return {0.0, 255.0, 1.0};
        case DecodingRule::Word:
            return {0.0, kLargestWord, 1.0};
        case DecodingRule::VehicleSpeed:
        case DecodingRule::WheelSpeed:
            return {0.0, kLargestWord * kSpeedStep, kSpeedStep};
        case DecodingRule::SteeringAngle:
            return {0.0, kLargestWord * kAngleStep, kAngleStep};
    }
    return {};
}

const char* ruleText(DecodingRule rule) {
    switch (rule) {
        case DecodingRule::Byte:
            return "byte";
        case DecodingRule::Word:
            return "word";
        case DecodingRule::VehicleSpeed:
            return "speed, km/h";
        case DecodingRule::SteeringAngle:
            return "steering angle, degrees";
        case DecodingRule::WheelSpeed:
            return "wheel speed, km/h";
        case DecodingRule::Switch:
            return "switch";
    }
    return "";
}

std::string encodePhysical(DecodingRule rule, double value) {
    const PhysicalRange range = physicalRange(rule);
    // The limit is shown rounded; what was copied from there is the limit.
    if (value > range.high && formatNumber(value) == formatNumber(range.high)) {
        value = range.high;
    }
    const bool fits = value >= range.low && value <= range.high;
    const bool whole = value == std::floor(value);
    if (!fits || (range.step == 1.0 && !whole)) {
        throw BadInput("value " + formatNumber(value) + " does not fit; expected " + rangeText(range));
    }
    // The tolerance keeps a value that lies on a step from being lifted to the next one by its binary rounding.
    const double steps = value / range.step;
    const double raw = rule == DecodingRule::WheelSpeed ? std::ceil(steps - 1e-6) : std::round(steps);
    return bytesOf(static_cast<std::uint32_t>(raw), isWord(rule));
}

std::string zeroValue(DecodingRule rule) {
    return bytesOf(0, isWord(rule));
}

std::string decodedText(DecodingRule rule, const std::string& raw) {
    const std::size_t needed = isWord(rule) ? 2 : 1;
    if (raw.size() < needed) {
        return "(too short)";
    }
    const double value = bigEndian(raw.substr(0, needed)) * physicalRange(rule).step;
    return formatNumber(rule == DecodingRule::WheelSpeed ? std::floor(value) : value);
}

std::optional<std::int32_t> decodeSet(const tables::SetRow& row, const std::string& raw) {
    if (raw.size() != (isWord(row.encoding) ? 2U : 1U)) {
        return std::nullopt;
    }
    return static_cast<std::int32_t>(bigEndian(raw)) - row.offset;
}

SetRange setRange(const tables::SetRow& row) {
    return {-row.offset, (isWord(row.encoding) ? 65535 : 255) - row.offset};
}

}  // namespace qvn::tools
