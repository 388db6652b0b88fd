#include "can-service-sim/trace/TraceWords.h"

#include <algorithm>
#include <string>

#include "desk/BadInput.h"
#include "desk/Number.h"
#include "desk/Text.h"

namespace qvn::tools {
namespace {

constexpr double kLongestTime = 1e6;
constexpr double kShortestPeriod = 0.001;
constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kLeadOn[] = {"every", "for", "over", "seed"};

}  // namespace

double readSeconds(std::string_view text, double least, std::string_view what) {
    const double seconds = parseNumber(text, what);
    if (seconds < least || seconds > kLongestTime) {
        throw BadInput(quoted(text) + " is out of range; expected " + std::string(what) + " from " +
                       formatNumber(least) + " to " + formatNumber(kLongestTime));
    }
    return seconds;
}

std::string_view TraceWords::peek() const {
    const std::size_t begin = mRest.find_first_not_of(kBlanks);
    if (begin == std::string_view::npos || mRest[begin] == '#') {
        return {};
    }
    const std::string_view word = wordAt(begin);
    const bool apart = begin >= 2 || mRest[0] == '\t';
    const bool leadsOn = std::find(std::begin(kLeadOn), std::end(kLeadOn), word) != std::end(kLeadOn);
    return apart && !leadsOn ? std::string_view() : word;
}

bool TraceWords::take(std::string_view keyword) {
    if (peek() != keyword) {
        return false;
    }
    next();
    return true;
}

std::string_view TraceWords::next() {
    const std::size_t begin = std::min(mRest.find_first_not_of(kBlanks), mRest.size());
    const std::string_view word = wordAt(begin);
    mRest.remove_prefix(begin + word.size());
    return word;
}

double TraceWords::nextSeconds(std::string_view what) {
    return readSeconds(next(), kShortestPeriod, what);
}

Repetition TraceWords::repetition() {
    Repetition repetition;
    for (;;) {
        if (!repetition.period && take("every")) {
            repetition.period = nextSeconds("a period in seconds");
        } else if (!repetition.duration && take("for")) {
            repetition.duration = nextSeconds("a duration in seconds");
        } else {
            return repetition;
        }
    }
}

double TraceWords::expectSeconds(std::string_view keyword, std::string_view what) {
    if (!take(keyword)) {
        throw BadInput((peek().empty() ? "the line ends too early" : quoted(peek()) + " is not expected here") +
                       "; expected '" + std::string(keyword) + "' and " + std::string(what));
    }
    return nextSeconds(what);
}

std::string_view TraceWords::wordAt(std::size_t begin) const {
    return mRest.substr(begin, mRest.find_first_of(kBlanks, begin) - begin);
}

}  // namespace qvn::tools
