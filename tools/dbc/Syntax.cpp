#include "dbc/Syntax.h"

#include <charconv>
#include <cmath>
#include <optional>

namespace qvn::dbc {
namespace {

constexpr std::size_t kLongestQuote = 60;

template <class Number>
std::optional<Number> parsed(std::string_view text) {
    if (text.size() > 1 && text[0] == '+') {
        text.remove_prefix(1);
    }
    Number number{};
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc() && result.ptr == end ? std::optional<Number>(number) : std::nullopt;
}

std::string described(const Token& token) {
    if (token.kind == Token::End) {
        return "the end of the file";
    }
    return (token.kind == Token::Text ? "the text '" : "'") + shown(token.text) + "'";
}

}  // namespace

std::string shown(std::string_view word) {
    std::string result;
    for (const char c : word.substr(0, kLongestQuote)) {
        const bool printable = c >= ' ' && c <= '~';
        result += printable ? c : '?';
    }
    return word.size() > kLongestQuote ? result + "..." : result;
}

bool Syntax::takeIf(std::string_view word) {
    if (!mTokens.peek().is(word)) {
        return false;
    }
    mTokens.take();
    return true;
}

void Syntax::skipRestOfLine() {
    for (bool goesOn = false; !atEnd() && (goesOn || !mTokens.peek().startsLine);) {
        goesOn = mTokens.take().is(",");
    }
}

void Syntax::skipSection() {
    while (!atSectionEnd()) {
        if (take().is(";")) {
            return;
        }
    }
}

std::string_view Syntax::name(const char* what) {
    if (mTokens.peek().kind != Token::Word) {
        fail(what);
    }
    return mTokens.take().text;
}

std::string Syntax::text() {
    if (mTokens.peek().kind != Token::Text) {
        fail("a text in '\"'");
    }
    std::string text(mTokens.take().text);
    for (std::size_t at = 0; (at = text.find("\\\"", at)) != std::string::npos; ++at) {
        text.erase(at, 1);
    }
    return text;
}

void Syntax::mark(std::string_view mark) {
    if (!takeIf(mark)) {
        fail("'" + std::string(mark) + "'");
    }
}

double Syntax::number(const char* what) {
    const auto number = parsed<double>(mTokens.peek().text);
    if (mTokens.peek().kind != Token::Word || !number || !std::isfinite(*number)) {
        fail(what);
    }
    mTokens.take();
    return *number;
}

std::uint32_t Syntax::whole(const char* what, std::uint32_t most, std::uint32_t least) {
    const auto number = parsed<std::uint32_t>(mTokens.peek().text);
    if (mTokens.peek().kind != Token::Word || !number || *number > most || *number < least) {
        fail(what);
    }
    mTokens.take();
    return *number;
}

std::int64_t Syntax::wide(const char* what) {
    const std::string_view text = mTokens.peek().text;
    const auto isSigned = parsed<std::int64_t>(text);
    const auto isUnsigned = parsed<std::uint64_t>(text);
    if (mTokens.peek().kind != Token::Word || (!isSigned && !isUnsigned)) {
        fail(what);
    }
    mTokens.take();
    return isSigned ? *isSigned : static_cast<std::int64_t>(*isUnsigned);
}

std::uint64_t Syntax::rangeEnd() {
    takeIf("-");
    // Without a blank before it, the '-' is read as the number's sign.
    std::string_view text = mTokens.peek().text;
    text.remove_prefix(text.substr(0, 1) == "-" ? 1 : 0);
    const auto number = parsed<std::uint64_t>(text);
    if (mTokens.peek().kind != Token::Word || !number) {
        fail("the end of a range such as 3-5");
    }
    mTokens.take();
    return *number;
}

void Syntax::fail(const std::string& expected) const {
    if (!atSectionEnd()) {
        fail(expected, peek());
    }
    const Token& last = mTokens.last();
    throw mistake(last.lastLine, "expected " + expected + " after " + described(last) + " " + mPlace);
}

void Syntax::fail(const std::string& expected, const Token& found) const {
    throw mistake(found.line, "expected " + expected + " instead of " + described(found) + " " + mPlace);
}

}  // namespace qvn::dbc
