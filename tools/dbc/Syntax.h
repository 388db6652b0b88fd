#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "dbc/Tokens.h"

namespace qvn::dbc {

constexpr std::uint32_t kLargestId = 0xFFFFFFFFU;

/// A word as an error shows it: shortened, with what cannot be printed replaced.
std::string shown(std::string_view word);

/// Takes what a file must have next. Each call throws SyntaxError when something else is there: with the word, what is
/// expected, and the place that was entered last.
class Syntax {
public:
    Syntax(std::string content, std::string name) : tokens_(std::move(content), std::move(name)) {}

    /// "in the message BO_ 291": what is read from here on.
    void enter(std::string place) { place_ = std::move(place); }

    const Token& peek() const { return tokens_.peek(); }
    bool atEnd() const { return tokens_.peek().kind == Token::End; }
    Token take() { return tokens_.take(); }
    /// Takes the next token if it is this word or mark.
    bool takeIf(std::string_view word);
    /// Passes over a list of names, which goes on in the next line after a comma.
    void skipRestOfLine();

    std::string_view name(const char* what);
    std::string text();
    void mark(std::string_view mark);
    /// The ';' at the end of a section. Where it is missing, and the next section begins on a line of its own, that is
    /// only noted.
    void end();
    double number(const char* what = "a number");
    std::uint32_t whole(const char* what, std::uint32_t most, std::uint32_t least = 0);
    /// A whole number of up to 64 bits; one above the signed ones comes out as its bits.
    std::int64_t wide();
    /// The second number of FIRST-LAST.
    std::uint64_t rangeEnd();

    [[noreturn]] void fail(const std::string& expected) const { fail(expected, tokens_.peek()); }
    [[noreturn]] void fail(const std::string& expected, const Token& found) const;
    /// An error for which no other word is expected.
    [[noreturn]] void wrong(int line, const std::string& text) const { tokens_.fail(line, text); }

    /// "NAME:LINE: TEXT"
    std::string at(int line, const std::string& text) const { return tokens_.at(line, text); }
    /// Notes something that is wrong and does not matter: `text` is what() of a SyntaxError.
    void leaveOut(const std::string& text);
    /// What was noted: the first of each kind, and how many there are.
    std::vector<std::string> leftOut() const;

private:
    struct Kind {
        std::string first;
        std::size_t count = 0;
    };

    Tokens tokens_;
    std::string place_;
    std::map<std::string, Kind> leftOut_;
};

}  // namespace qvn::dbc
