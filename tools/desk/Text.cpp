#include "desk/Text.h"

#include <algorithm>
#include <cctype>

namespace qvn::tools {
namespace {

constexpr std::size_t kLongestQuote = 60;

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

std::string hexBytes(std::string_view raw) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    for (const char c : raw) {
        const auto byte = static_cast<unsigned char>(c);
        text += {kDigits[byte >> 4], kDigits[byte & 0xF]};
    }
    return text;
}

std::string lowerCase(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return result;
}

std::string_view withoutByteOrderMark(std::string_view line) {
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    return line.substr(0, kMark.size()) == kMark ? line.substr(kMark.size()) : line;
}

}  // namespace qvn::tools
