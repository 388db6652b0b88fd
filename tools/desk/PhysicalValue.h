#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tables/DecodingRules.h"
#include "tables/SetCatalogue.h"

namespace qvn::tools {

/// The largest physical value that a signal can carry; the smallest is 0.
double largestValue(const tables::DecodingRow& row);

/// "integer", "float in steps of 0.1" and the like: what a signal's values are.
std::string kindText(const tables::DecodingRow& row);

/// The raw bytes that are decoded to this value: the nearest value that the bytes can carry. Where decoding cuts a
/// fraction off, the nearest one above, so that a whole number comes out as it went in.
/// @throws BadInput for a value out of range, or a fraction where the signal counts in whole numbers
std::string encodePhysical(const tables::DecodingRow& row, double value);

/// The raw value of zero, in the signal's length.
std::string zeroValue(const tables::DecodingRow& row);

/// What a client reads from these bytes, as text; "(too short)" when bytes are missing.
std::string decodedText(const tables::DecodingRow& row, const std::string& raw);

/// The number that a client set, from the bytes of its request. Nothing when the bytes are not of the signal's length.
std::optional<std::int32_t> decodeSet(const tables::SetRow& row, const std::string& raw);

}  // namespace qvn::tools
