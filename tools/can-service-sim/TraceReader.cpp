#include "can-service-sim/TraceReader.h"

#include <algorithm>
#include <cctype>

#include "can-service-sim/InputLines.h"
#include "desk/BadInput.h"
#include "desk/Number.h"
#include "desk/PhysicalValue.h"
#include "desk/SignalNames.h"
#include "desk/SignalNotes.h"
#include "desk/Text.h"
#include "tables/DecodingRules.h"

namespace qvn::tools {
namespace {

constexpr double kLongestTime = 1e6;
constexpr double kShortestPeriod = 0.001;
constexpr std::size_t kMostBytes = 64;  // of a CAN FD frame
constexpr std::string_view kBlanks = " \t";

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t\r");
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

double readSeconds(std::string_view text, double least, std::string_view what) {
    const double seconds = parseNumber(text, what);
    if (seconds < least || seconds > kLongestTime) {
        throw BadInput(quoted(text) + " is out of range; expected " + std::string(what) + " from " +
                       formatNumber(least) + " to " + formatNumber(kLongestTime));
    }
    return seconds;
}

/// Takes the words of a line one after the other.
class Words {
public:
    explicit Words(std::string_view rest) : rest_(rest) {}

    /// The next word; empty at the end of the line and where a remark begins. A remark begins at a '#', and after two
    /// blanks unless "every" or "for" follows.
    std::string_view peek() const {
        const std::size_t begin = rest_.find_first_not_of(kBlanks);
        if (begin == std::string_view::npos || rest_[begin] == '#') {
            return {};
        }
        const std::string_view word = wordAt(begin);
        const bool apart = begin >= 2 || rest_[0] == '\t';
        return apart && word != "every" && word != "for" ? std::string_view() : word;
    }

    bool take(std::string_view keyword) {
        if (peek() != keyword) {
            return false;
        }
        next();
        return true;
    }

    /// The next word whatever stands before it.
    std::string_view next() {
        const std::size_t begin = std::min(rest_.find_first_not_of(kBlanks), rest_.size());
        const std::string_view word = wordAt(begin);
        rest_.remove_prefix(begin + word.size());
        return word;
    }

private:
    std::string_view wordAt(std::size_t begin) const {
        return rest_.substr(begin, rest_.find_first_of(kBlanks, begin) - begin);
    }

    std::string_view rest_;
};

std::string readBytes(std::string_view text) {
    const auto isHex = [](unsigned char c) { return std::isxdigit(c) != 0; };
    if (text.size() % 2 != 0 || text.size() > 2 * kMostBytes || !std::all_of(text.begin(), text.end(), isHex)) {
        throw BadInput(quoted(text) + " are no raw bytes; expected pairs of hexadecimal digits, at most 64 bytes");
    }
    std::string raw;
    for (std::size_t i = 0; i < text.size(); i += 2) {
        raw += static_cast<char>(std::stoi(std::string(text.substr(i, 2)), nullptr, 16));
    }
    return raw;
}

bool readFlag(std::string_view text, std::string_view one, std::string_view zero) {
    if (text != one && text != zero) {
        throw BadInput(quoted(text) + " is not known here; expected " + std::string(one) + " or " + std::string(zero));
    }
    return text == one;
}

std::string readPhysical(std::uint32_t code, std::string_view text) {
    const tables::DecodingRow* const row = tables::findDecodingRule(code);
    if (!row) {
        throw BadInput("signal " + hexText(code) + " has no decoding rule; give its raw bytes as " + hexText(code) +
                       "#00");
    }
    return encodePhysical(*row, parseValue(code, text, "a physical value"));
}

TraceAction readMessageOrStop(std::string_view name, std::string_view text) {
    if (text == "stop") {
        return StopEvent{findCode(NameKind::Received, name)};
    }
    if (text != "timeout" && text != "ok") {
        throw BadInput(quoted(text) + " is not known here; expected MESSAGE!timeout, MESSAGE!ok or SIGNAL!stop");
    }
    return MessageEvent{findCode(NameKind::Message, name), text == "timeout"};
}

TraceAction readAction(std::string_view event) {
    const std::size_t mark = event.find_first_of("#=!");
    if (mark == std::string_view::npos || mark == 0) {
        throw BadInput(quoted(event) + " is no event; expected SIGNAL#BYTES, SIGNAL=VALUE, SIGNAL!stop, " +
                       "MESSAGE!timeout, MESSAGE!ok, reverse=1|0 or service=up|down");
    }
    const std::string_view name = event.substr(0, mark);
    const std::string_view text = event.substr(mark + 1);
    if (event[mark] == '!') {
        return readMessageOrStop(name, text);
    }
    if (event[mark] == '=' && name == "reverse") {
        return ReverseEvent{readFlag(text, "1", "0")};
    }
    if (event[mark] == '=' && name == "service") {
        return ServiceEvent{readFlag(text, "up", "down")};
    }
    const std::uint32_t code = findCode(NameKind::Received, name);
    return SignalEvent{code, event[mark] == '#' ? readBytes(text) : readPhysical(code, text), std::nullopt};
}

Cycle readCycle(Words& words) {
    Cycle cycle;
    cycle.period = readSeconds(words.next(), kShortestPeriod, "a period in seconds");
    if (words.take("for")) {
        cycle.duration = readSeconds(words.next(), kShortestPeriod, "a duration in seconds");
    }
    return cycle;
}

}  // namespace

std::optional<TraceEvent> readTraceLine(std::string_view line) {
    line = trimmed(withoutByteOrderMark(line));
    if (line.empty() || line[0] == '#') {
        return std::nullopt;
    }
    TraceEvent event;
    if (line[0] == '(') {
        const std::size_t end = line.find(')');
        if (end == std::string_view::npos) {
            throw BadInput(quoted(line) + " has no closing ')'; expected a time such as (0.500)");
        }
        event.time = readSeconds(trimmed(line.substr(1, end - 1)), 0.0, "a time in seconds");
        line.remove_prefix(end + 1);
    }
    Words words(line);
    event.action = readAction(words.next());
    if (auto* signal = std::get_if<SignalEvent>(&event.action); signal && words.take("every")) {
        signal->cycle = readCycle(words);
    }
    if (const std::string_view extra = words.peek(); !extra.empty()) {
        throw BadInput(quoted(extra) + " is not expected here; a signal may be followed by 'every SECONDS' and " +
                       "'for SECONDS', a remark begins with '#' or two blanks");
    }
    return event;
}

std::vector<TraceEvent> readTrace(std::istream& input, const std::string& name,
                                  const std::function<void(std::size_t)>& progress) {
    constexpr std::size_t kEventsBetween = 50'000;
    std::vector<TraceEvent> events;
    readLines(input, name, [&](const std::string& line) {
        if (std::optional<TraceEvent> event = readTraceLine(line)) {
            if (!event->time) {
                throw BadInput(quoted(trimmed(line)) + " has no time; expected one in front, such as (0.500)");
            }
            events.push_back(std::move(*event));
            if (progress && events.size() % kEventsBetween == 0) {
                progress(events.size());
            }
        }
    });
    std::stable_sort(events.begin(), events.end(), [](const auto& a, const auto& b) { return *a.time < *b.time; });
    return events;
}

double traceEnd(const std::vector<TraceEvent>& events) {
    double end = 0.0;
    for (const TraceEvent& event : events) {
        const auto* const signal = std::get_if<SignalEvent>(&event.action);
        const double lasting = signal && signal->cycle ? signal->cycle->duration.value_or(0.0) : 0.0;
        end = std::max(end, event.time.value_or(0.0) + lasting);
    }
    return end;
}

}  // namespace qvn::tools
