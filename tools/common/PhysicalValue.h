#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tables/DecodingRules.h"
#include "tables/SetCatalogue.h"

namespace qvn::tools {

/// The range and step of the physical values that a rule can carry; a step of 1 means whole numbers only.
struct PhysicalRange {
    double low;
    double high;
    double step;
};

PhysicalRange physicalRange(tables::DecodingRule rule);

/// "speed in km/h, two bytes" and the like: what a rule's values are.
const char* ruleText(tables::DecodingRule rule);

/// The raw bytes that the rule decodes to this value: the nearest value that the bytes can carry. A wheel speed is
/// rounded up instead, since its decoding cuts the fraction off and a whole number is to come out as it went in.
/// @throws BadInput for a value out of range, or a fraction where the rule has whole numbers
std::string encodePhysical(tables::DecodingRule rule, double value);

/// The raw value of zero, in the rule's length.
std::string zeroValue(tables::DecodingRule rule);

/// What a client reads from these bytes, as text; "(too short)" when bytes are missing.
std::string decodedText(tables::DecodingRule rule, const std::string& raw);

/// The number that a client set, from the bytes of its request. Nothing when the bytes are not of the encoding's
/// length.
std::optional<std::int32_t> decodeSet(const tables::SetRow& row, const std::string& raw);

/// The smallest and largest number that a set signal can carry.
struct SetRange {
    std::int32_t low;
    std::int32_t high;
};

SetRange setRange(const tables::SetRow& row);

}  // namespace qvn::tools
