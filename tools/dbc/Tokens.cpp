#include "dbc/Tokens.h"

#include <algorithm>
#include <utility>

#include "dbc/Reader.h"

namespace qvn::dbc {
namespace {

constexpr std::string_view kBlanks = " \t\r\n\f\v";
constexpr std::string_view kMarks = ":;,|@()[]+-";
constexpr std::string_view kComment = "//";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool isOneOf(char c, std::string_view set) {
    return set.find(c) != std::string_view::npos;
}

bool beginsNumber(char c) {
    return (c >= '0' && c <= '9') || c == '.';
}

}  // namespace

Tokens::Tokens(std::string content, std::string name) : content_(std::move(content)), name_(std::move(name)) {
    if (content_.compare(0, kByteOrderMark.size(), kByteOrderMark) == 0) {
        position_ = kByteOrderMark.size();
    }
    next_ = read();
    next_.startsLine = true;
}

Token Tokens::take() {
    const Token taken = next_;
    lastLine_ = line_;
    next_ = read();
    return taken;
}

std::string Tokens::at(int line, const std::string& text) const {
    return name_ + ":" + std::to_string(line) + ": " + text;
}

void Tokens::fail(int line, const std::string& text) const {
    throw SyntaxError(at(line, text));
}

Token Tokens::read() {
    const int lineBefore = line_;
    while (skipBlank()) {
    }
    Token token;
    token.line = line_;
    token.startsLine = line_ != lineBefore;
    if (position_ == content_.size()) {
        return token;
    }
    if (content_[position_] == '"') {
        readText(token);
    } else {
        readWord(token);
    }
    const std::size_t next = content_.find_first_not_of(" \t\r", position_);
    token.endsLine = next == std::string::npos || content_[next] == '\n';
    return token;
}

bool Tokens::skipBlank() {
    if (content_.compare(position_, kComment.size(), kComment) == 0) {
        position_ = std::min(content_.find('\n', position_), content_.size());
        return true;
    }
    if (position_ == content_.size() || !isOneOf(content_[position_], kBlanks)) {
        return false;
    }
    line_ += content_[position_] == '\n' ? 1 : 0;
    ++position_;
    return true;
}

/// Of a '"' behind a backslash: a path may end with one, and then the section ends behind the text.
bool Tokens::endsText(std::size_t position) const {
    const std::size_t next = content_.find_first_not_of(" \t", position + 1);
    const std::size_t after = next == std::string::npos ? next : content_.find_first_not_of(" \t\r", next + 1);
    return next == std::string::npos ||
           (content_[next] == ';' && (after == std::string::npos || content_[after] == '\n'));
}

void Tokens::readText(Token& token) {
    const std::size_t begin = position_ + 1;
    std::size_t end = begin;
    while (end < content_.size() && content_[end] != '"') {
        const bool quoted = content_.compare(end, 2, "\\\"") == 0 && !endsText(end + 1);
        end += quoted ? 2 : 1;
    }
    if (end >= content_.size()) {
        fail(line_, "the text that begins here has no end; expected another '\"'");
    }
    token.kind = Token::Text;
    token.text = std::string_view(content_).substr(begin, end - begin);
    line_ += static_cast<int>(std::count(token.text.begin(), token.text.end(), '\n'));
    position_ = end + 1;
}

void Tokens::readWord(Token& token) {
    const bool isMark = isOneOf(content_[position_], kMarks) && !isSign(position_);
    const std::size_t end = isMark ? position_ + 1 : endOfWord();
    token.kind = isMark ? Token::Mark : Token::Word;
    token.text = std::string_view(content_).substr(position_, end - position_);
    position_ = end;
}

std::size_t Tokens::endOfWord() const {
    const bool number = beginsNumber(content_[position_]) || isSign(position_);
    std::size_t end = position_ + 1;
    for (; end < content_.size(); ++end) {
        const bool ofExponent = number && isOneOf(content_[end - 1], "eE") && isSign(end);
        if (isOneOf(content_[end], kBlanks) || content_[end] == '"' ||
            (isOneOf(content_[end], kMarks) && !ofExponent)) {
            break;
        }
    }
    return end;
}

bool Tokens::isSign(std::size_t position) const {
    return isOneOf(content_[position], "+-") && position + 1 < content_.size() && beginsNumber(content_[position + 1]);
}

}  // namespace qvn::dbc
