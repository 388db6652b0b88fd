#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

#include "dbc/Tokens.h"

namespace qvn::dbc {

constexpr std::uint32_t kLargestId = 0xFFFFFFFFU;

/// A word as an error shows it: shortened, with what cannot be printed replaced.
std::string shown(std::string_view word);

/// One thing that is wrong in a file; what() is "NAME:LINE: ...". The file may be of use without it.
class Mistake : public std::runtime_error {
public:
    Mistake(int line, const std::string& text) : std::runtime_error(text), mLine(line) {}
    int line() const { return mLine; }

private:
    int mLine;
};

/// Takes what a file must have next. Each call throws Mistake when something else is there: with the word, what is
/// expected, and the place that was entered last.
class Syntax {
public:
    Syntax(std::string content, std::string name) : mTokens(std::move(content), std::move(name)) {}

    /// "in the message BO_ 291": what is read from here on.
    void enter(std::string place) { mPlace = std::move(place); }

    const Token& peek() const { return mTokens.peek(); }
    bool atEnd() const { return mTokens.peek().kind == Token::End; }
    /// Whether the next section begins here, or the file ends.
    bool atSectionEnd() const { return atEnd() || peek().beginsSection(); }
    Token take() { return mTokens.take(); }
    /// Takes the next token if it is this word or mark.
    bool takeIf(std::string_view word);
    /// Passes over a list of names, which goes on in the next line after a comma.
    void skipRestOfLine();
    /// Passes over the rest of a section. Some end with a ';', others where the next one begins.
    void skipSection();

    std::string_view name(const char* what);
    std::string text();
    void mark(std::string_view mark);
    double number(const char* what = "a number");
    std::uint32_t whole(const char* what, std::uint32_t most, std::uint32_t least = 0);
    /// A whole number of up to 64 bits; one above the signed ones comes out as its bits.
    std::int64_t wide(const char* what);
    /// The second number of FIRST-LAST.
    std::uint64_t rangeEnd();

    /// What is missing at the end of a section is missed in its last line, not where the next one begins.
    [[noreturn]] void fail(const std::string& expected) const;
    [[noreturn]] void fail(const std::string& expected, const Token& found) const;
    Mistake mistake(int line, const std::string& text) const { return {line, mTokens.located(line, text)}; }

private:
    Tokens mTokens;
    std::string mPlace;
};

}  // namespace qvn::dbc
