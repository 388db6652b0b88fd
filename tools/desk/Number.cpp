#include "desk/Number.h"

#include <charconv>
#include <cmath>
#include <cstdio>

#include "desk/BadInput.h"
#include "desk/Text.h"

namespace qvn::tools {

double parseNumber(std::string_view text, std::string_view what) {
    if (const std::optional<std::uint32_t> whole = parseHex(text)) {
        return *whole;
    }
    const char* const end = text.data() + text.size();
    double number = 0.0;
    const auto result = std::from_chars(text.data(), end, number);
    if (result.ec != std::errc() || result.ptr != end || !std::isfinite(number)) {
        throw BadInput(quoted(text) + " is not a number; expected " + std::string(what));
    }
    return number;
}

std::optional<std::uint32_t> parseHex(std::string_view text) {
    if (text.size() < 3 || text[0] != '0' || (text[1] != 'x' && text[1] != 'X')) {
        return std::nullopt;
    }
    std::uint32_t number = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data() + 2, end, number, 16);
    if (result.ec != std::errc() || result.ptr != end) {
        return std::nullopt;
    }
    return number;
}

std::string formatNumber(double number) {
    char text[32];
    std::snprintf(text, sizeof text, "%.7g", number);
    return text;
}

std::string hexText(std::uint32_t number) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", number);
    return text;
}

}  // namespace qvn::tools
