#include "can-service-sim/trace/TraceReader.h"

#include <algorithm>
#include <optional>
#include <type_traits>

#include "can-service-sim/Generator.h"
#include "can-service-sim/console/InputLines.h"
#include "can-service-sim/trace/TraceCommands.h"
#include "can-service-sim/trace/TraceWords.h"
#include "desk/BadInput.h"
#include "desk/Number.h"
#include "desk/PhysicalValue.h"
#include "desk/SignalNames.h"
#include "desk/SignalNotes.h"
#include "desk/Text.h"
#include "tables/DecodingRules.h"

namespace qvn::tools {
namespace {

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t\r");
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

bool readFlag(std::string_view text, std::string_view one, std::string_view zero) {
    if (text != one && text != zero) {
        throw BadInput(quoted(text) + " is not known here; expected " + std::string(one) + " or " + std::string(zero));
    }
    return text == one;
}

const tables::DecodingRow& ruleOf(std::uint32_t code) {
    const tables::DecodingRow* const row = tables::findDecodingRule(code);
    if (!row) {
        throw BadInput("signal " + hexText(code) + " has no decoding rule; give its raw bytes as " + hexText(code) +
                       "#00");
    }
    return *row;
}

std::uint32_t findCodeOf(TraceCommand::Of of, std::string_view name) {
    const bool isMessage =
        of == TraceCommand::Of::Message || (of == TraceCommand::Of::Either && lookUpCode(NameKind::Message, name));
    return findCode(isMessage ? NameKind::Message : NameKind::Received, name);
}

/// What stands behind a '!'.
TraceAction readCommand(std::string_view name, std::string_view text, TraceWords& words) {
    const TraceCommand* const command = findTraceCommand(text);
    if (!command) {
        throw BadInput(quoted(text) + " is not known here; expected " + expectedCommands());
    }
    const auto read = [&](auto event) -> TraceAction {
        event.code = findCodeOf(command->of, name);
        if constexpr (std::is_same_v<decltype(event), FaultEvent>) {
            event.seconds = command->takesSeconds() ? readSeconds(words.next(), 0.0, command->seconds) : 0.0;
        }
        return event;
    };
    return std::visit(read, command->event);
}

std::optional<Cycle> readCycle(TraceWords& words) {
    const Repetition repetition = words.repetition();
    if (repetition.duration && !repetition.period) {
        throw BadInput("'for' is not expected here without 'every SECONDS'");
    }
    return repetition.period ? std::optional(Cycle{*repetition.period, repetition.duration}) : std::nullopt;
}

/// What stands behind a signal's '='.
TraceAction readValue(std::uint32_t code, std::string_view text, TraceWords& words) {
    const tables::DecodingRow& row = ruleOf(code);
    if (Generator::isName(text)) {
        return GenerateEvent{code, std::make_shared<const Generator>(Generator::read(text, row, words))};
    }
    return SignalEvent{code, encodePhysical(row, parseValue(code, text, "a physical value")), std::nullopt};
}

TraceAction readAction(TraceWords& words) {
    const std::string_view event = words.next();
    const std::size_t mark = event.find_first_of("#=!");
    if (mark == std::string_view::npos || mark == 0) {
        throw BadInput(quoted(event) + " is not an event; expected SIGNAL#BYTES, SIGNAL=VALUE, SIGNAL!stop, " +
                       "MESSAGE!timeout, MESSAGE!ok, reverse=1|0 or service=up|down");
    }
    const std::string_view name = event.substr(0, mark);
    const std::string_view text = event.substr(mark + 1);
    if (event[mark] == '!') {
        return readCommand(name, text, words);
    }
    if (event[mark] == '=' && name == "reverse") {
        return ReverseEvent{readFlag(text, "1", "0")};
    }
    if (event[mark] == '=' && name == "service") {
        return ServiceEvent{readFlag(text, "up", "down")};
    }
    const std::uint32_t code = findCode(NameKind::Received, name);
    TraceAction action = event[mark] == '#' ? SignalEvent{code, readHexBytes(text), {}} : readValue(code, text, words);
    if (auto* const signal = std::get_if<SignalEvent>(&action)) {
        signal->cycle = readCycle(words);
    }
    return action;
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
    TraceWords words(line);
    event.action = readAction(words);
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

}  // namespace qvn::tools
