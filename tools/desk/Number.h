#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qvn::tools {

/// Reads a decimal or 0x-hexadecimal number; `what` names it in the error.
/// @throws BadInput unless the whole text is one finite number
double parseNumber(std::string_view text, std::string_view what);

/// The number of a hexadecimal text that begins with 0x, else nothing.
std::optional<std::uint32_t> parseHex(std::string_view text);

/// The number as people write it: up to seven digits, no zeros at the end.
std::string formatNumber(double number);

/// "0x01384CD0"
std::string hexText(std::uint32_t number);

}  // namespace qvn::tools
