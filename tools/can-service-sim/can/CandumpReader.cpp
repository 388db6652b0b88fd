#include "can-service-sim/can/CandumpReader.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include "can-service-sim/console/InputLines.h"
#include "desk/BadInput.h"
#include "desk/Number.h"
#include "desk/Text.h"

namespace qvn::tools {
namespace {

constexpr std::string_view kSeparators = " \t\r";
constexpr std::size_t kStandardDigits = 3;
constexpr std::size_t kExtendedDigits = 8;
constexpr std::uint32_t kLargestExtendedId = 0x1FFFFFFF;  // above it are the flags of error frames
constexpr std::size_t kClassicBytes = 8;
constexpr double kLongestLog = 1e6;
constexpr double kLargestTime = 1e10;  // of one time stamp

std::string_view takeWord(std::string_view& line) {
    line.remove_prefix(std::min(line.find_first_not_of(kSeparators), line.size()));
    const std::string_view word = line.substr(0, line.find_first_of(kSeparators));
    line.remove_prefix(word.size());
    return word;
}

double readTime(std::string_view word) {
    if (word.size() < 2 || word.front() != '(' || word.back() != ')') {
        throw BadInput(quoted(word) + " is not a time; expected a line as 'candump -l' writes it, such as " +
                       "(1436509052.249713) can0 123#DEADBEEF");
    }
    const std::string_view text = word.substr(1, word.size() - 2);
    const double time = parseNumber(text, "a time in seconds");
    if (time < 0.0 || time > kLargestTime) {
        throw BadInput(quoted(text) + " is out of range; expected a time in seconds from 0 to " +
                       formatNumber(kLargestTime));
    }
    return time;
}

std::uint32_t readId(std::string_view text) {
    std::uint32_t id = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), id, 16);
    const bool standard = text.size() == kStandardDigits && id <= 0x7FF;
    if (result.ptr != text.data() + text.size() || (!standard && text.size() != kExtendedDigits)) {
        throw BadInput(quoted(text) +
                       " is no CAN id; expected 3 hexadecimal digits up to 7FF, or 8 for an extended one");
    }
    return id;
}

/// ID#BYTES, of CAN FD ID##FLAGS BYTES, of a remote frame ID#R. A length code above 8 may follow eight bytes: _C
std::optional<CanFrame> readFrame(std::string_view word) {
    const std::size_t mark = word.find('#');
    if (mark == std::string_view::npos) {
        throw BadInput(quoted(word) + " is not a frame; expected ID#BYTES, ID##FLAGSBYTES of CAN FD, or ID#R");
    }
    CanFrame frame;
    frame.id = readId(word.substr(0, mark));
    frame.extended = mark == kExtendedDigits;
    std::string_view data = word.substr(mark + 1);
    if (frame.id > kLargestExtendedId || data.substr(0, 1) == "R") {
        return std::nullopt;
    }
    const bool flexible = data.substr(0, 1) == "#";
    if (flexible) {
        data.remove_prefix(std::min<std::size_t>(data.size(), 2));
    } else {
        data = data.substr(0, data.find('_'));
    }
    frame.payload = readHexBytes(data);
    if (!flexible && frame.payload.size() > kClassicBytes) {
        throw BadInput(quoted(word) + " has more than 8 bytes; expected '##' in a frame of CAN FD");
    }
    return frame;
}

}  // namespace

std::optional<LoggedFrame> readCandumpLine(std::string_view line) {
    const std::string_view time = takeWord(line);
    if (time.empty()) {
        return std::nullopt;
    }
    LoggedFrame logged;
    logged.time = readTime(time);
    takeWord(line);  // the interface
    logged.frame = readFrame(takeWord(line));
    const std::string_view direction = takeWord(line);
    if (!direction.empty() && direction != "R" && direction != "T") {
        throw BadInput(quoted(direction) +
                       " is not expected here; R (received), T (transmitted) or nothing follows a frame");
    }
    return logged;
}

std::vector<TraceEvent> readCandump(std::istream& input, const std::string& name,
                                    const std::function<bool(const CanFrame&)>& keep) {
    std::vector<TraceEvent> events;
    double first = std::numeric_limits<double>::max();
    double last = 0.0;
    readLines(input, name, [&](const std::string& line) {
        std::optional<LoggedFrame> logged = readCandumpLine(line);
        if (!logged) {
            return;
        }
        first = std::min(first, logged->time);
        last = std::max(last, logged->time);
        if (last - first > kLongestLog) {
            throw BadInput("this time is more than " + formatNumber(kLongestLog) + " s from another one in the log");
        }
        if (logged->frame && keep(*logged->frame)) {
            events.push_back({logged->time, FrameEvent{std::move(*logged->frame)}});
        }
    });
    for (TraceEvent& event : events) {
        *event.time -= first;
    }
    std::stable_sort(events.begin(), events.end(), [](const auto& a, const auto& b) { return *a.time < *b.time; });
    return events;
}

}  // namespace qvn::tools
