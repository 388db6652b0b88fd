#include "common/BadInput.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>

namespace qvn::tools {
namespace {

constexpr std::size_t kLongestQuote = 60;

bool isHex(std::string_view text) {
    return text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
}

}  // namespace

std::string quoted(std::string_view text) {
    std::string result = "'";
    for (const char c : text.substr(0, kLongestQuote)) {
        const bool printable = c >= ' ' && c <= '~';
        result += printable ? c : '?';
    }
    result += text.size() > kLongestQuote ? "...'" : "'";
    return result;
}

double parseNumber(std::string_view text, std::string_view what) {
    const char* const end = text.data() + text.size();
    double number = 0.0;
    std::from_chars_result result{text.data(), std::errc::invalid_argument};
    if (isHex(text)) {
        std::uint32_t whole = 0;
        result = std::from_chars(text.data() + 2, end, whole, 16);
        number = whole;
    } else {
        result = std::from_chars(text.data(), end, number);
    }
    if (result.ec != std::errc() || result.ptr != end || !std::isfinite(number)) {
        throw BadInput(quoted(text) + " is no number; expected " + std::string(what));
    }
    return number;
}

std::string_view withoutByteOrderMark(std::string_view line) {
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    return line.substr(0, kMark.size()) == kMark ? line.substr(kMark.size()) : line;
}

std::string formatNumber(double number) {
    char text[32];
    std::snprintf(text, sizeof text, "%.7g", number);
    return text;
}

}  // namespace qvn::tools
