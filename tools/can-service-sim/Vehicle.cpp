#include "can-service-sim/Vehicle.h"

#include <unordered_map>

#include "desk/PhysicalValue.h"
#include "desk/SignalNames.h"
#include "tables/MessageCatalogue.h"

namespace qvn::tools {

Vehicle::Vehicle(Observer& observer, bool initialValues, CanDecoder* decoder) : mObserver(observer), mDecoder(decoder) {
    if (initialValues) {
        for (const tables::DecodingRow& row : tables::kDecodingRules) {
            mInitialValues[row.code] = zeroValue(row);
        }
    }
    mState.values = mInitialValues;
}

void Vehicle::onGiven(std::uint32_t signal, const std::string& raw) {
    if (!mSilent) {
        mObserver.onGiven(signal, raw);
    }
}

void Vehicle::onArrived(std::uint32_t signal, const std::string& raw) {
    const std::string& shown = mFaults.shown(signal, raw);
    mState.values[signal] = shown;
    if (!mSilent) {
        mObserver.onValue(signal, shown);
    }
}

void Vehicle::onStatus(std::uint32_t message, bool timedOut) {
    if (timedOut) {
        mState.timedOut.insert(message);
    } else {
        mState.timedOut.erase(message);
    }
    if (!mSilent) {
        mObserver.onStatus(message, timedOut);
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
    Lane& lane = mLanes.try_emplace(key, Lane{MessageLane(message, mFaults, *this), {}}).first->second;
    if (mSilent) {
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
        mNext.erase({*lane.next, key});
    }
    if (next) {
        mNext.emplace(*next, key);
    }
    lane.next = next;
}

std::optional<VehicleTime> Vehicle::next() const {
    return mNext.empty() ? std::nullopt : std::optional(mNext.begin()->first);
}

void Vehicle::runNext() {
    const std::uint32_t key = mNext.begin()->second;
    Lane& lane = mLanes.at(key);
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
    if (!mSilent) {
        mObserver.onStop(event.code);
    }
    enter(event.code, now, [&](MessageLane& lane) { lane.stop(event.code); });
}

void Vehicle::happen(const MessageEvent& event, VehicleTime now) {
    enter(event.code, now, [&](MessageLane& lane) {
        lane.setByHand(event.timedOut);
        if (!event.timedOut) {
            mFaults.endSilence(event.code);
        }
        onStatus(event.code, event.timedOut);
    });
}

void Vehicle::happen(const FaultEvent& event, VehicleTime now) {
    enter(event.code, now, [&](MessageLane& lane) {
        const auto value = mState.values.find(event.code);
        const auto raw = value == mState.values.end() ? std::nullopt : std::optional(value->second);
        if (const std::optional<std::string> shown = mFaults.apply(event, raw)) {
            lane.receive(event.code, *shown, now);
        }
    });
    if (!mSilent) {
        mObserver.onFault(event);
    }
}

void Vehicle::happen(const ReverseEvent& event, VehicleTime /*now*/) {
    mState.reverse = event.engaged;
    if (!mSilent) {
        mObserver.onReverse(event.engaged);
    }
}

void Vehicle::happen(const ServiceEvent& event, VehicleTime /*now*/) {
    const bool before = std::exchange(mState.serviceUp, event.up);
    if (!mSilent && before != event.up) {
        mObserver.onService(event.up);
    }
}

void Vehicle::happen(const FrameEvent& event, VehicleTime now) {
    const DecodedFrame decoded = mDecoder->decode(event.frame);
    for (const std::string& complaint : decoded.complaints) {
        mObserver.onComplaint(complaint);
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
    const State told = mState;
    mSilent = true;
    startAfresh(trace);
    play();
    for (auto& [key, lane] : mLanes) {
        lane.lane.skipTo(now + VehicleTime(1));
        schedule(key, lane);
    }
    mSilent = false;
    tellDifference(told);
}

void Vehicle::startAfresh(const std::vector<TraceEvent>& trace) {
    mNext.clear();
    mLanes.clear();
    for (const auto& [signal, raw] : mFaults.end()) {
        mState.values[signal] = raw;
    }
    mState.timedOut.clear();
    if (mDecoder) {
        mDecoder->forgetValues();
    }
    for (const TraceEvent& event : trace) {
        std::visit([this](const auto& about) { reset(about); }, event.action);
    }
}

void Vehicle::reset(const FrameEvent& event) {
    for (const std::uint32_t code : mDecoder->signalsIn(event.frame)) {
        forget(code);
    }
}

void Vehicle::forget(std::uint32_t signal) {
    const auto initial = mInitialValues.find(signal);
    if (initial == mInitialValues.end()) {
        mState.values.erase(signal);
    } else {
        mState.values[signal] = initial->second;
    }
}

// A client repeats the values of a message that is back, so they come before; a service that comes back has all of it.
void Vehicle::tellDifference(const State& told) {
    if (told.serviceUp && !mState.serviceUp) {
        mObserver.onService(false);
    }
    for (const auto& [signal, raw] : told.values) {
        if (mState.values.count(signal) == 0) {
            mObserver.onNoValue(signal);
        }
    }
    for (const auto& [signal, raw] : mState.values) {
        const auto before = told.values.find(signal);
        if (before == told.values.end() || before->second != raw) {
            mObserver.onValue(signal, raw);
        }
    }
    for (const tables::MessageRow& message : tables::kMessages) {
        const bool timedOut = mState.timedOut.count(message.code) != 0;
        if (timedOut != (told.timedOut.count(message.code) != 0)) {
            mObserver.onStatus(message.code, timedOut);
        }
    }
    if (mState.reverse && mState.reverse != told.reverse) {
        mObserver.onReverse(*mState.reverse);
    }
    if (mState.serviceUp && !told.serviceUp) {
        mObserver.onService(true);
    }
}

}  // namespace qvn::tools
