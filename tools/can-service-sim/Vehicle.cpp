#include "can-service-sim/Vehicle.h"

#include <unordered_map>

#include "desk/PhysicalValue.h"
#include "desk/SignalNames.h"
#include "tables/MessageCatalogue.h"

namespace qvn::tools {

Vehicle::Vehicle(Observer& observer, bool initialValues, CanDecoder* decoder) : observer_(observer), decoder_(decoder) {
    if (initialValues) {
        for (const tables::DecodingRow& row : tables::kDecodingRules) {
            initialValues_[row.code] = zeroValue(row);
        }
    }
    state_.values = initialValues_;
}

void Vehicle::onGiven(std::uint32_t signal, const std::string& raw) {
    if (!silent_) {
        observer_.onGiven(signal, raw);
    }
}

void Vehicle::onArrived(std::uint32_t signal, const std::string& raw) {
    const std::string& shown = faults_.shown(signal, raw);
    state_.values[signal] = shown;
    if (!silent_) {
        observer_.onValue(signal, shown);
    }
}

void Vehicle::onStatus(std::uint32_t message, bool timedOut) {
    if (timedOut) {
        state_.timedOut.insert(message);
    } else {
        state_.timedOut.erase(message);
    }
    if (!silent_) {
        observer_.onStatus(message, timedOut);
    }
}

/// The message of a signal, or the message itself.
std::optional<std::uint32_t> Vehicle::messageOf(std::uint32_t code) {
    static const auto* const kMessages = [] {
        auto* const messages = new std::unordered_map<std::uint32_t, std::uint32_t>;
        for (const tables::MessageRow& message : tables::kMessages) {
            messages->emplace(message.code, message.code);
            for (const SignalListRow& signal : message.signals) {
                messages->emplace(signal.code_id, message.code);
            }
        }
        return messages;
    }();
    const auto found = kMessages->find(code);
    return found == kMessages->end() ? std::nullopt : std::optional(found->second);
}

/// Does something in the lane of a signal or message, after what was due in it.
template <class Action>
void Vehicle::enter(std::uint32_t code, VehicleTime now, const Action& action) {
    const std::optional<std::uint32_t> message = messageOf(code);
    const std::uint32_t key = message.value_or(code);
    Lane& lane = lanes_.try_emplace(key, Lane{MessageLane(message, faults_, *this), {}}).first->second;
    if (silent_) {
        lane.lane.skipTo(now);
    }
    action(lane.lane);
    schedule(key, lane);
}

void Vehicle::schedule(std::uint32_t key, Lane& lane) {
    const std::optional<VehicleTime> next = lane.lane.next();
    if (next == lane.next) {
        return;
    }
    if (lane.next) {
        next_.erase({*lane.next, key});
    }
    if (next) {
        next_.emplace(*next, key);
    }
    lane.next = next;
}

std::optional<VehicleTime> Vehicle::next() const {
    return next_.empty() ? std::nullopt : std::optional(next_.begin()->first);
}

void Vehicle::runNext() {
    const std::uint32_t key = next_.begin()->second;
    Lane& lane = lanes_.at(key);
    lane.lane.runNext();
    schedule(key, lane);
}

void Vehicle::apply(const TraceAction& action, VehicleTime now) {
    std::visit([&](const auto& event) { happen(event, now); }, action);
}

void Vehicle::happen(const SignalEvent& event, VehicleTime now) {
    onGiven(event.code, event.raw);
    enter(event.code, now, [&](MessageLane& lane) { lane.put(event, now); });
}

void Vehicle::happen(const GenerateEvent& event, VehicleTime now) {
    enter(event.code, now, [&](MessageLane& lane) { lane.start(event, now); });
}

void Vehicle::happen(const StopEvent& event, VehicleTime now) {
    if (!silent_) {
        observer_.onStop(event.code);
    }
    enter(event.code, now, [&](MessageLane& lane) { lane.stop(event.code); });
}

void Vehicle::happen(const MessageEvent& event, VehicleTime now) {
    enter(event.code, now, [&](MessageLane& lane) {
        lane.setByHand(event.timedOut);
        if (!event.timedOut) {
            faults_.endSilence(event.code);
        }
        onStatus(event.code, event.timedOut);
    });
}

void Vehicle::happen(const FaultEvent& event, VehicleTime now) {
    enter(event.code, now, [&](MessageLane& lane) {
        const auto value = state_.values.find(event.code);
        const auto raw = value == state_.values.end() ? std::nullopt : std::optional(value->second);
        if (const std::optional<std::string> shown = faults_.apply(event, raw)) {
            lane.receive(event.code, *shown, now);
        }
    });
    if (!silent_) {
        observer_.onFault(event);
    }
}

void Vehicle::happen(const ReverseEvent& event, VehicleTime /*now*/) {
    state_.reverse = event.engaged;
    if (!silent_) {
        observer_.onReverse(event.engaged);
    }
}

void Vehicle::happen(const ServiceEvent& event, VehicleTime /*now*/) {
    const bool before = std::exchange(state_.serviceUp, event.up);
    if (!silent_ && before != event.up) {
        observer_.onService(event.up);
    }
}

void Vehicle::happen(const FrameEvent& event, VehicleTime now) {
    const DecodedFrame decoded = decoder_->decode(event.frame);
    for (const std::string& complaint : decoded.complaints) {
        observer_.onComplaint(complaint);
    }
    for (const std::uint32_t message : decoded.messages) {
        enter(message, now, [&](MessageLane& lane) { lane.receiveMessage(now, decoded.period); });
    }
    for (const DecodedFrame::Value& value : decoded.values) {
        if (value.changed) {
            onGiven(value.code, value.raw);
        }
        enter(value.code, now, [&](MessageLane& lane) { lane.receive(value.code, value.raw, now); });
    }
}

void Vehicle::playSilently(const std::vector<TraceEvent>& trace, VehicleTime now, const std::function<void()>& play) {
    const State told = state_;
    silent_ = true;
    startAfresh(trace);
    play();
    for (auto& [key, lane] : lanes_) {
        lane.lane.skipTo(now + VehicleTime(1));
        schedule(key, lane);
    }
    silent_ = false;
    tellDifference(told);
}

void Vehicle::startAfresh(const std::vector<TraceEvent>& trace) {
    next_.clear();
    lanes_.clear();
    for (const auto& [signal, raw] : faults_.end()) {
        state_.values[signal] = raw;
    }
    state_.timedOut.clear();
    if (decoder_) {
        decoder_->forgetValues();
    }
    for (const TraceEvent& event : trace) {
        std::visit([this](const auto& about) { reset(about); }, event.action);
    }
}

void Vehicle::reset(const FrameEvent& event) {
    for (const std::uint32_t code : decoder_->signalsIn(event.frame)) {
        forget(code);
    }
}

void Vehicle::forget(std::uint32_t signal) {
    const auto initial = initialValues_.find(signal);
    if (initial == initialValues_.end()) {
        state_.values.erase(signal);
    } else {
        state_.values[signal] = initial->second;
    }
}

// A client repeats the values of a message that is back, so they come before; a service that comes back has all of it.
void Vehicle::tellDifference(const State& told) {
    if (told.serviceUp && !state_.serviceUp) {
        observer_.onService(false);
    }
    for (const auto& [signal, raw] : told.values) {
        if (state_.values.count(signal) == 0) {
            observer_.onNoValue(signal);
        }
    }
    for (const auto& [signal, raw] : state_.values) {
        const auto before = told.values.find(signal);
        if (before == told.values.end() || before->second != raw) {
            observer_.onValue(signal, raw);
        }
    }
    for (const tables::MessageRow& message : tables::kMessages) {
        const bool timedOut = state_.timedOut.count(message.code) != 0;
        if (timedOut != (told.timedOut.count(message.code) != 0)) {
            observer_.onStatus(message.code, timedOut);
        }
    }
    if (state_.reverse && state_.reverse != told.reverse) {
        observer_.onReverse(*state_.reverse);
    }
    if (state_.serviceUp && !told.serviceUp) {
        observer_.onService(true);
    }
}

}  // namespace qvn::tools
