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
    int lastLine = 1;         ///< where it ends
    bool startsLine = false;  ///< whether it is the first one on its line
    bool endsLine = false;    ///< whether it is the last one

    bool is(std::string_view word) const { return kind != Text && kind != End && text == word; }
    /// Whether it looks like the keyword of a section, or of a signal: SG_.
    bool beginsSection() const;
};

/// Whether keywords of sections have such characters.
bool isOfKeyword(char c);

/// A DBC file as a sequence of words (names and numbers, with their signs), quoted texts and marks such as ':', without
/// the remarks that begin with //.
class Tokens {
public:
    Tokens(std::string content, std::string name);
    Tokens(const Tokens&) = delete;
    Tokens& operator=(const Tokens&) = delete;

    const Token& peek() const { return mNext; }
    /// @throws SyntaxError when the token after it is a text without an end
    Token take();
    /// The token that was taken last.
    const Token& last() const { return mLast; }

    /// "NAME:LINE: ..."
    std::string located(int line, const std::string& text) const;

private:
    Token read();
    void skipBlanksAndRemarks();
    void readWord(Token& token);
    void readText(Token& token);
    bool endsText(std::size_t backslash) const;
    std::size_t endOfWord() const;
    bool isSign(std::size_t position) const;
    bool isRemark(std::size_t position) const { return mContent.compare(position, 2, "//") == 0; }

    std::string mContent;
    std::string mName;
    std::size_t mPosition = 0;
    int mLine = 1;
    Token mLast;
    Token mNext;
};

}  // namespace qvn::dbc
