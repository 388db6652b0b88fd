#include "can-service-sim/TraceCut.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

#include "desk/PhysicalValue.h"

namespace qvn::tools {
namespace {

using Events = std::vector<TraceEvent>;
using Subject = std::pair<std::size_t, std::uint32_t>;

bool isBefore(const TraceEvent& event, double time) {
    return *event.time < time;
}

/// What an event is about: a later event about the same takes its place.
Subject subjectOf(const TraceAction& action) {
    if (const auto* const signal = std::get_if<SignalEvent>(&action)) {
        return {0, signal->code};
    }
    if (const auto* const generate = std::get_if<GenerateEvent>(&action)) {
        return {0, generate->code};
    }
    if (const auto* const fault = std::get_if<FaultEvent>(&action)) {
        const bool freezes = fault->kind == FaultEvent::Kind::Freeze || fault->kind == FaultEvent::Kind::Thaw;
        return {freezes ? 2 : 3 + static_cast<std::size_t>(fault->kind), fault->code};
    }
    if (const auto* const frame = std::get_if<FrameEvent>(&action)) {
        return {9, frame->frame.id};
    }
    if (const auto* const message = std::get_if<MessageEvent>(&action)) {
        return {1, message->code};
    }
    return {10 + action.index(), 0};
}

/// Lets an event have happened that many seconds ago.
void age(TraceAction& action, double seconds, const std::set<std::uint32_t>& stopped) {
    if (auto* const signal = std::get_if<SignalEvent>(&action)) {
        const bool over = signal->cycle && signal->cycle->duration && *signal->cycle->duration <= seconds;
        if (over || stopped.count(signal->code) != 0) {
            signal->cycle.reset();
        } else if (signal->cycle && signal->cycle->duration) {
            *signal->cycle->duration -= seconds;
        }
    } else if (auto* const generate = std::get_if<GenerateEvent>(&action)) {
        generate->since = seconds;
        const bool ended = generate->generator->isOver(seconds) && !generate->generator->holds();
        if (ended || stopped.count(generate->code) != 0) {
            action = SignalEvent{generate->code, generate->generator->rawAt(seconds), {}};
        }
    }
}

/// The events that lead to the state at a time, all at once: the last one about each subject. A cycle that was stopped
/// or has ended leaves its value.
Events lastOfEach(Events::const_iterator begin, Events::const_iterator end, double now) {
    std::set<Subject> known;
    std::set<std::uint32_t> stopped;
    Events state;
    for (auto event = std::make_reverse_iterator(end); event != std::make_reverse_iterator(begin); ++event) {
        if (const auto* const stop = std::get_if<StopEvent>(&event->action)) {
            stopped.insert(stop->code);
        } else if (known.insert(subjectOf(event->action)).second) {
            TraceEvent kept{0.0, event->action};
            age(kept.action, now - *event->time, stopped);
            state.push_back(std::move(kept));
        }
    }
    std::reverse(state.begin(), state.end());
    return state;
}

/// What was true of an event's subject before anything happened to it; nothing when that is the normal course of
/// things.
std::optional<TraceAction> beforeAll(const TraceAction& action) {
    const auto zero = [](std::uint32_t code) -> std::optional<TraceAction> {
        const tables::DecodingRow* const row = tables::findDecodingRule(code);
        return row ? std::optional<TraceAction>(SignalEvent{code, zeroValue(*row), {}}) : std::nullopt;
    };
    if (const auto* const signal = std::get_if<SignalEvent>(&action)) {
        return zero(signal->code);
    }
    if (const auto* const generate = std::get_if<GenerateEvent>(&action)) {
        return zero(generate->code);
    }
    if (std::holds_alternative<ReverseEvent>(action)) {
        return ReverseEvent{false};
    }
    if (std::holds_alternative<ServiceEvent>(action)) {
        return ServiceEvent{true};
    }
    return std::nullopt;
}

}  // namespace

std::vector<TraceEvent> stateAt(const std::vector<TraceEvent>& trace, double time) {
    const auto next = std::lower_bound(trace.begin(), trace.end(), time, isBefore);
    Events state = lastOfEach(trace.begin(), next, time);
    std::set<Subject> known;
    for (const TraceEvent& event : state) {
        known.insert(subjectOf(event.action));
    }
    for (auto event = next; event != trace.end(); ++event) {
        const std::optional<TraceAction> action = beforeAll(event->action);
        if (action && known.insert(subjectOf(event->action)).second) {
            state.push_back({0.0, *action});
        }
    }
    return state;
}

std::vector<TraceEvent> cutTrace(std::vector<TraceEvent> trace, const TraceCut& cut) {
    const double begin = cut.startAt.value_or(cut.from.value_or(0.0));
    const auto first = std::lower_bound(trace.begin(), trace.end(), begin, isBefore);
    const auto last = !cut.to ? trace.end()
                              : std::upper_bound(first, trace.end(), *cut.to,
                                                 [](double time, const auto& e) { return time < *e.time; });
    Events part = cut.startAt ? lastOfEach(trace.begin(), first, begin) : Events();
    part.reserve(part.size() + static_cast<std::size_t>(last - first));
    for (auto event = first; event != last; ++event) {
        event->time = *event->time - begin;
        part.push_back(std::move(*event));
    }
    return part;
}

}  // namespace qvn::tools
