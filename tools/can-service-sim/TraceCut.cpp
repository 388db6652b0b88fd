#include "can-service-sim/TraceCut.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "desk/PhysicalValue.h"
#include "desk/SignalNames.h"

namespace qvn::tools {
namespace {

using Events = std::vector<TraceEvent>;
enum SubjectKind : std::size_t { kValue, kShown, kMessage, kFreeze, kFrame, kOther };
using Subject = std::pair<std::size_t, std::uint32_t>;

bool isBefore(const TraceEvent& event, double time) {
    return *event.time < time;
}

bool isAfter(double time, const TraceEvent& event) {
    return time < *event.time;
}

/// What an event is about: a later event about the same takes its place.
Subject subjectOf(const TraceAction& action) {
    if (const auto* const signal = std::get_if<SignalEvent>(&action)) {
        return {kValue, signal->code};
    }
    if (const auto* const generate = std::get_if<GenerateEvent>(&action)) {
        return {kValue, generate->code};
    }
    if (const auto* const fault = std::get_if<FaultEvent>(&action)) {
        const bool freezes = fault->kind == FaultEvent::Kind::Freeze || fault->kind == FaultEvent::Kind::Thaw;
        return {freezes ? kFreeze : kOther + static_cast<std::size_t>(fault->kind), fault->code};
    }
    if (const auto* const received = std::get_if<FrameEvent>(&action)) {
        return {kFrame, received->frame.id | (received->frame.extended ? 1U << 31U : 0U)};
    }
    if (const auto* const message = std::get_if<MessageEvent>(&action)) {
        return {kMessage, message->code};
    }
    return {kOther + 10 + action.index(), 0};
}

/// What is left of an event that happened that many seconds ago: a cycle or a course may be over by now.
TraceAction aged(TraceAction action, double seconds) {
    if (auto* const signal = std::get_if<SignalEvent>(&action)) {
        if (signal->cycle && signal->cycle->duration && *signal->cycle->duration <= seconds) {
            signal->cycle.reset();
        } else if (signal->cycle && signal->cycle->duration) {
            *signal->cycle->duration -= seconds;
        }
    } else if (auto* const generate = std::get_if<GenerateEvent>(&action)) {
        generate->since += seconds;
        if (generate->generator->isOver(generate->since) && !generate->generator->holds()) {
            action = SignalEvent{generate->code, generate->generator->rawAt(generate->since), {}};
        }
    }
    return action;
}

/// What the events up to some time have led to, without time passing meanwhile.
class State {
public:
    void take(const TraceEvent& event) {
        const double now = *event.time;
        if (const auto* const signal = std::get_if<SignalEvent>(&event.action); signal && !signal->cycle) {
            keep(now, SignalEvent{signal->code, signal->raw, cycleAt(signal->code, now)});
        } else if (const auto* const stop = std::get_if<StopEvent>(&event.action)) {
            keepValue(kValue, stop->code, now);
        } else {
            if (const auto* const fault = std::get_if<FaultEvent>(&event.action)) {
                takeFault(*fault, now);
            }
            keep(now, event.action);
        }
    }

    /// The events that lead there, all at once.
    Events at(double now) const {
        std::map<std::size_t, TraceEvent> ordered;
        for (const auto& [subject, entry] : entries_) {
            ordered[entry.order] = {0.0, aged(entry.action, now - entry.time)};
        }
        Events events;
        for (auto& [order, event] : ordered) {
            events.push_back(std::move(event));
        }
        return events;
    }

private:
    struct Entry {
        std::size_t order;
        double time;
        TraceAction action;
    };

    void keep(double time, TraceAction action) {
        const Subject subject = subjectOf(action);
        keep(subject, time, std::move(action));
    }
    void keep(const Subject& subject, double time, TraceAction action) {
        entries_.insert_or_assign(subject, Entry{order_++, time, std::move(action)});
    }

    std::optional<TraceAction> actionAt(std::uint32_t signal, double now) const {
        const auto found = entries_.find({kValue, signal});
        return found == entries_.end() ? std::nullopt
                                       : std::optional(aged(found->second.action, now - found->second.time));
    }

    /// The cycle that is running, also as that of a course.
    std::optional<Cycle> cycleAt(std::uint32_t signal, double now) const {
        const std::optional<TraceAction> action = actionAt(signal, now);
        if (const auto* const course = action ? std::get_if<GenerateEvent>(&*action) : nullptr) {
            return Cycle{course->generator->period(), {}};
        }
        return action ? std::get<SignalEvent>(*action).cycle : std::nullopt;
    }

    /// Keeps the value that a signal has now, without a cycle.
    void keepValue(SubjectKind kind, std::uint32_t signal, double now) {
        const std::optional<TraceAction> action = actionAt(signal, now);
        if (const auto* const course = action ? std::get_if<GenerateEvent>(&*action) : nullptr) {
            keep({kind, signal}, now, SignalEvent{signal, course->generator->rawAt(course->since), {}});
        } else if (action) {
            keep({kind, signal}, now, SignalEvent{signal, std::get<SignalEvent>(*action).raw, {}});
        }
    }

    /// What a fault keeps from being shown comes behind it; what is shown instead has to come before.
    void takeFault(const FaultEvent& fault, double now) {
        std::vector<std::uint32_t> signals;
        for (const auto& [subject, entry] : entries_) {
            const bool freezes = fault.kind == FaultEvent::Kind::Freeze && subject.second == fault.code;
            const bool silences = fault.kind == FaultEvent::Kind::Silence && messageOf(subject.second) == fault.code;
            if (subject.first == kValue && (freezes || silences)) {
                signals.push_back(subject.second);
            }
        }
        for (const std::uint32_t signal : signals) {
            keepValue(kShown, signal, now);
        }
    }

    std::map<Subject, Entry> entries_;
    std::size_t order_ = 0;
};

Events stateAfter(Events::const_iterator begin, Events::const_iterator end, double now) {
    State state;
    std::for_each(begin, end, [&](const TraceEvent& event) { state.take(event); });
    return state.at(now);
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
    const auto next = trace.begin() + static_cast<std::ptrdiff_t>(nextAfter(trace, time));
    Events state = stateAfter(trace.begin(), next, time);
    std::set<Subject> known;
    for (const TraceEvent& event : state) {
        known.insert(subjectOf(event.action));
    }
    for (auto event = next; event != trace.end(); ++event) {
        if (known.insert(subjectOf(event->action)).second) {
            if (const std::optional<TraceAction> action = beforeAll(event->action)) {
                state.push_back({0.0, *action});
            }
        }
    }
    return state;
}

std::size_t nextAfter(const std::vector<TraceEvent>& trace, double time) {
    return static_cast<std::size_t>(std::upper_bound(trace.begin(), trace.end(), time, isAfter) - trace.begin());
}

std::vector<TraceEvent> cutTrace(std::vector<TraceEvent> trace, const TraceCut& cut) {
    const double begin = cut.startAt.value_or(cut.from.value_or(0.0));
    const auto first = std::lower_bound(trace.begin(), trace.end(), begin, isBefore);
    const auto last = !cut.to ? trace.end() : std::upper_bound(first, trace.end(), *cut.to, isAfter);
    Events part = cut.startAt ? stateAfter(trace.begin(), first, begin) : Events();
    part.reserve(part.size() + static_cast<std::size_t>(last - first));
    for (auto event = first; event != last; ++event) {
        event->time = *event->time - begin;
        part.push_back(std::move(*event));
    }
    return part;
}

}  // namespace qvn::tools
