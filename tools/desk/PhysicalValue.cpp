#include "desk/PhysicalValue.h"

#include <cmath>

#include "desk/BadInput.h"
#include "desk/Number.h"
#include "tables/RawBytes.h"

namespace qvn::tools {
namespace {

using tables::DecodingRow;
using tables::ValueKind;

std::uint32_t largestNumber(std::uint32_t bytes) {
    return (1U << 8U * bytes) - 1U;
}

bool cutsFractions(const DecodingRow& row) {
    return row.kind != ValueKind::Float;
}

bool countsWholeNumbers(const DecodingRow& row) {
    return cutsFractions(row) && row.factor == 1.0;
}

}  // namespace

double largestValue(const DecodingRow& row) {
    return largestNumber(row.bytes) * row.factor;
}

std::string kindText(const DecodingRow& row) {
    std::string text;
    switch (row.kind) {
        case ValueKind::Integer:
            text = "integer";
            break;
        case ValueKind::Float:
            text = "float";
            break;
        case ValueKind::Switch:
            text = "switch";
            break;
    }
    return row.factor == 1.0 ? text : text + " in steps of " + formatNumber(row.factor);
}

std::string encodePhysical(const DecodingRow& row, double value) {
    const double largest = largestValue(row);
    // The user sees the limit rounded, and may give it back as it was shown.
    if (value > largest && formatNumber(value) == formatNumber(largest)) {
        value = largest;
    }
    const bool whole = countsWholeNumbers(row);
    if (!(value >= 0.0 && value <= largest) || (whole && value != std::floor(value))) {
        throw BadInput("value " + formatNumber(value) + " does not fit; expected a " + (whole ? "whole " : "") +
                       "number from 0 to " + formatNumber(largest));
    }
    // A value on a step may come out of the division a little above it, and must not be taken to the next step.
    const double steps = value / row.factor;
    const double raw = cutsFractions(row) ? std::ceil(steps - 1e-6) : std::round(steps);
    return tables::rawBytes(static_cast<std::uint32_t>(raw), row.bytes);
}

std::string zeroValue(const DecodingRow& row) {
    return tables::rawBytes(0, row.bytes);
}

std::string decodedText(const DecodingRow& row, const std::string& raw) {
    if (raw.size() < row.bytes) {
        return "(too short)";
    }
    const double value = tables::numberIn(raw, row.bytes) * row.factor;
    return formatNumber(cutsFractions(row) ? std::floor(value) : value);
}

std::optional<std::int32_t> decodeSet(const tables::SetRow& row, const std::string& raw) {
    if (raw.size() != row.bytes) {
        return std::nullopt;
    }
    return static_cast<std::int32_t>(tables::numberIn(raw, row.bytes)) - row.offset;
}

}  // namespace qvn::tools
