#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace qvn::dbc {

struct Token {
    enum Kind { Word, Text, Mark, End };

    Kind kind = End;
    std::string_view text;    ///< a Text without its quotation marks
    int line = 1;             ///< where it begins
    bool startsLine = false;  ///< whether it is the first one on its line
    bool endsLine = false;    ///< whether it is the last one

    bool is(std::string_view word) const { return kind != Text && kind != End && text == word; }
};

/// A DBC file as a sequence of words (names and numbers, with their signs), quoted texts and marks such as ':'. What
/// follows "//" on a line is passed over.
class Tokens {
public:
    Tokens(std::string content, std::string name);
    Tokens(const Tokens&) = delete;
    Tokens& operator=(const Tokens&) = delete;

    const Token& peek() const { return next_; }
    /// Where the token ends that was taken last.
    int lastLine() const { return lastLine_; }
    /// @throws SyntaxError when the token after it is a text without an end
    Token take();

    /// "NAME:LINE: TEXT"
    std::string at(int line, const std::string& text) const;
    /// @throws SyntaxError with that
    [[noreturn]] void fail(int line, const std::string& text) const;

private:
    Token read();
    void readWord(Token& token);
    void readText(Token& token);
    bool skipBlank();
    bool endsText(std::size_t position) const;
    std::size_t endOfWord() const;
    bool isSign(std::size_t position) const;

    std::string content_;
    std::string name_;
    std::size_t position_ = 0;
    int line_ = 1;
    int lastLine_ = 1;
    Token next_;
};

}  // namespace qvn::dbc
