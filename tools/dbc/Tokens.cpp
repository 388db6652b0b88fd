#include "dbc/Tokens.h"

#include <algorithm>
#include <utility>

#include "dbc/Reader.h"

namespace qvn::dbc {
namespace {

constexpr std::string_view kBlanks = " \t\r\n\f\v";
constexpr std::string_view kMarks = ":;,|@()[]+-";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool isOneOf(char c, std::string_view set) {
    return set.find(c) != std::string_view::npos;
}

bool beginsNumber(char c) {
    return (c >= '0' && c <= '9') || c == '.';
}

}  // namespace

bool isOfKeyword(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

bool Token::beginsSection() const {
    const bool keyword = !text.empty() && std::all_of(text.begin(), text.end(), &isOfKeyword) && text.back() == '_';
    return kind == Word && startsLine && (keyword || text == "VERSION");
}

Tokens::Tokens(std::string content, std::string name) : mContent(std::move(content)), mName(std::move(name)) {
    if (mContent.compare(0, kByteOrderMark.size(), kByteOrderMark) == 0) {
        mPosition = kByteOrderMark.size();
    }
    mNext = read();
    mNext.startsLine = true;
}

Token Tokens::take() {
    mLast = mNext;
    mNext = read();
    return mLast;
}

std::string Tokens::located(int line, const std::string& text) const {
    return mName + ":" + std::to_string(line) + ": " + text;
}

void Tokens::skipBlanksAndRemarks() {
    while (mPosition < mContent.size()) {
        if (isRemark(mPosition)) {
            mPosition = std::min(mContent.find('\n', mPosition), mContent.size());
        } else if (isOneOf(mContent[mPosition], kBlanks)) {
            mLine += mContent[mPosition++] == '\n' ? 1 : 0;
        } else {
            return;
        }
    }
}

Token Tokens::read() {
    const int lineBefore = mLine;
    skipBlanksAndRemarks();
    Token token;
    token.line = mLine;
    token.startsLine = mLine != lineBefore;
    if (mPosition == mContent.size()) {
        return token;
    }
    if (mContent[mPosition] == '"') {
        readText(token);
    } else {
        readWord(token);
    }
    const std::size_t next = mContent.find_first_not_of(" \t\r", mPosition);
    token.endsLine = next == std::string::npos || mContent[next] == '\n' || isRemark(next);
    token.lastLine = mLine;
    return token;
}

void Tokens::readText(Token& token) {
    const std::size_t begin = mPosition + 1;
    std::size_t end = begin;
    while (end < mContent.size() && mContent[end] != '"') {
        end += mContent.compare(end, 2, "\\\"") == 0 && !endsText(end) ? 2 : 1;
    }
    if (end >= mContent.size()) {
        throw SyntaxError(located(mLine, "the text that begins here has no end; expected another '\"'"));
    }
    token.kind = Token::Text;
    token.text = std::string_view(mContent).substr(begin, end - begin);
    mLine += static_cast<int>(std::count(token.text.begin(), token.text.end(), '\n'));
    mPosition = end + 1;
}

/// Whether the backslash belongs to the text and the '"' after it does not, as of a path: the statement ends there, and
/// another one begins in the next line.
bool Tokens::endsText(std::size_t backslash) const {
    const std::size_t semicolon = mContent.find_first_not_of(" \t", backslash + 2);
    if (semicolon == std::string::npos || mContent[semicolon] != ';') {
        return false;
    }
    const std::size_t next = mContent.find_first_not_of(kBlanks, semicolon + 1);
    if (next == std::string::npos) {
        return true;
    }
    const std::string_view rest = std::string_view(mContent).substr(next);
    const std::size_t end =
        static_cast<std::size_t>(std::find_if_not(rest.begin(), rest.end(), &isOfKeyword) - rest.begin());
    const bool ofNextLine = mContent.find('\n', semicolon) < next;
    return ofNextLine && (isRemark(next) || (end > 0 && rest[end - 1] == '_'));
}

void Tokens::readWord(Token& token) {
    const bool isMark = isOneOf(mContent[mPosition], kMarks) && !isSign(mPosition);
    const std::size_t end = isMark ? mPosition + 1 : endOfWord();
    token.kind = isMark ? Token::Mark : Token::Word;
    token.text = std::string_view(mContent).substr(mPosition, end - mPosition);
    mPosition = end;
}

std::size_t Tokens::endOfWord() const {
    const bool number = beginsNumber(mContent[mPosition]) || isSign(mPosition);
    std::size_t end = mPosition + 1;
    for (; end < mContent.size(); ++end) {
        const bool ofExponent = number && isOneOf(mContent[end - 1], "eE") && isSign(end);
        if (isOneOf(mContent[end], kBlanks) || mContent[end] == '"' ||
            (isOneOf(mContent[end], kMarks) && !ofExponent) || isRemark(end)) {
            break;
        }
    }
    return end;
}

bool Tokens::isSign(std::size_t position) const {
    return isOneOf(mContent[position], "+-") && position + 1 < mContent.size() && beginsNumber(mContent[position + 1]);
}

}  // namespace qvn::dbc
