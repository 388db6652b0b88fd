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

Tokens::Tokens(std::string content, std::string name) : content_(std::move(content)), name_(std::move(name)) {
    if (content_.compare(0, kByteOrderMark.size(), kByteOrderMark) == 0) {
        position_ = kByteOrderMark.size();
    }
    next_ = read();
    next_.startsLine = true;
}

Token Tokens::take() {
    last_ = next_;
    next_ = read();
    return last_;
}

std::string Tokens::located(int line, const std::string& text) const {
    return name_ + ":" + std::to_string(line) + ": " + text;
}

void Tokens::skipBlanksAndRemarks() {
    while (position_ < content_.size()) {
        if (isRemark(position_)) {
            position_ = std::min(content_.find('\n', position_), content_.size());
        } else if (isOneOf(content_[position_], kBlanks)) {
            line_ += content_[position_++] == '\n' ? 1 : 0;
        } else {
            return;
        }
    }
}

Token Tokens::read() {
    const int lineBefore = line_;
    skipBlanksAndRemarks();
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
    token.endsLine = next == std::string::npos || content_[next] == '\n' || isRemark(next);
    token.lastLine = line_;
    return token;
}

void Tokens::readText(Token& token) {
    const std::size_t begin = position_ + 1;
    std::size_t end = begin;
    while (end < content_.size() && content_[end] != '"') {
        end += content_.compare(end, 2, "\\\"") == 0 && !endsText(end) ? 2 : 1;
    }
    if (end >= content_.size()) {
        throw SyntaxError(located(line_, "the text that begins here has no end; expected another '\"'"));
    }
    token.kind = Token::Text;
    token.text = std::string_view(content_).substr(begin, end - begin);
    line_ += static_cast<int>(std::count(token.text.begin(), token.text.end(), '\n'));
    position_ = end + 1;
}

/// Whether the backslash belongs to the text and the '"' after it does not, as of a path: the statement ends there, and
/// another one begins in the next line.
bool Tokens::endsText(std::size_t backslash) const {
    const std::size_t semicolon = content_.find_first_not_of(" \t", backslash + 2);
    if (semicolon == std::string::npos || content_[semicolon] != ';') {
        return false;
    }
    const std::size_t next = content_.find_first_not_of(kBlanks, semicolon + 1);
    if (next == std::string::npos) {
        return true;
    }
    const std::string_view rest = std::string_view(content_).substr(next);
    const std::size_t end =
        static_cast<std::size_t>(std::find_if_not(rest.begin(), rest.end(), &isOfKeyword) - rest.begin());
    const bool ofNextLine = content_.find('\n', semicolon) < next;
    return ofNextLine && (isRemark(next) || (end > 0 && rest[end - 1] == '_'));
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
            (isOneOf(content_[end], kMarks) && !ofExponent) || isRemark(end)) {
            break;
        }
    }
    return end;
}

bool Tokens::isSign(std::size_t position) const {
    return isOneOf(content_[position], "+-") && position + 1 < content_.size() && beginsNumber(content_[position + 1]);
}

}  // namespace qvn::dbc
