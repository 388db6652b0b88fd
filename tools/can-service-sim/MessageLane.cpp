#include "can-service-sim/MessageLane.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "can-service-sim/Generator.h"

namespace qvn::tools {

VehicleTime MessageLane::RunningCycle::timeOf(std::uint64_t tickNumber) const {
    return begin + vehicleTime(static_cast<double>(tickNumber) * period);
}

/// Goes to the last tick before that time.
void MessageLane::RunningCycle::skipTo(VehicleTime time) {
    auto skipped = std::max(tick, static_cast<std::uint64_t>(secondsOf(time - begin) / period));
    while (skipped > tick && timeOf(skipped) >= time) {
        --skipped;
    }
    tick = last ? std::min(skipped, *last) : skipped;
}

void MessageLane::put(const SignalEvent& event, VehicleTime now) {
    if (event.cycle) {
        begin(event.code, {event.raw, event.cycle->period, now, lastTick(*event.cycle), {}});
        return;
    }
    if (const auto running = mCycles.find(event.code); running != mCycles.end()) {
        RunningCycle& cycle = running->second;
        cycle.raw = event.raw;
        if (cycle.generator) {
            cycle.generator.reset();
            cycle.last.reset();
        }
    }
    receive(event.code, event.raw, now);
}

void MessageLane::start(const GenerateEvent& event, VehicleTime now) {
    begin(event.code, {{}, event.generator->period(), now, event.generator->lastTick(), event.generator});
}

void MessageLane::begin(std::uint32_t signal, RunningCycle cycle) {
    tick(mCycles.insert_or_assign(signal, std::move(cycle)).first);
}

void MessageLane::tick(Cycles::iterator found) {
    auto& [signal, cycle] = *found;
    const VehicleTime now = cycle.next();
    if (cycle.generator) {
        cycle.raw = cycle.generator->rawAt(cycle.tick);
        mOutput.onGiven(signal, cycle.raw);
    }
    receive(signal, cycle.raw, now, cycle.period);
    if (cycle.tick++ != cycle.last) {
        return;
    }
    if (cycle.generator && cycle.generator->holds()) {
        cycle.generator.reset();
        cycle.last.reset();
    } else {
        mCycles.erase(found);
    }
}

void MessageLane::receive(std::uint32_t signal, const std::string& raw, VehicleTime now, double period) {
    if (mFaults.isSilent(mMessage)) {
        return;
    }
    const VehicleTime delay = vehicleTime(mFaults.delayOf(signal, mMessage));
    const auto late = mLate.find(signal);
    if (late != mLate.end()) {
        // What is late stays in order when the delay shrinks.
        late->second.push_back({std::max(late->second.back().due, now + delay), raw, period});
    } else if (delay > VehicleTime::zero()) {
        mLate[signal].push_back({now + delay, raw, period});
    } else {
        arrive(signal, raw, now, period);
    }
}

void MessageLane::receiveMessage(VehicleTime now, double period) {
    if (mMessage && !mFaults.isSilent(mMessage) && mSupervisor.received(now, period)) {
        mOutput.onStatus(*mMessage, false);
    }
}

void MessageLane::arrive(std::uint32_t signal, const std::string& raw, VehicleTime now, double period) {
    if (mMessage && mSupervisor.received(now, period)) {
        mOutput.onStatus(*mMessage, false);
    }
    mOutput.onArrived(signal, raw);
}

MessageLane::Cycles::iterator MessageLane::nextCycle() {
    return std::min_element(mCycles.begin(), mCycles.end(),
                            [](const auto& a, const auto& b) { return a.second.next() < b.second.next(); });
}

MessageLane::LateValues::iterator MessageLane::nextLate() {
    return std::min_element(mLate.begin(), mLate.end(),
                            [](const auto& a, const auto& b) { return a.second.front().due < b.second.front().due; });
}

std::optional<VehicleTime> MessageLane::next() const {
    std::optional<VehicleTime> next = mSupervisor.deadline();
    const auto take = [&next](VehicleTime time) { next = next ? std::min(*next, time) : time; };
    for (const auto& [signal, cycle] : mCycles) {
        take(cycle.next());
    }
    for (const auto& [signal, values] : mLate) {
        take(values.front().due);
    }
    return next;
}

/// Of what is due at the same time, late values come first, and a time-out last.
void MessageLane::runNext() {
    const std::optional<VehicleTime> now = next();
    const auto late = nextLate();
    const auto cycle = nextCycle();
    if (late != mLate.end() && late->second.front().due == now) {
        const std::uint32_t signal = late->first;
        const LateValue value = std::move(late->second.front());
        late->second.pop_front();
        if (late->second.empty()) {
            mLate.erase(late);
        }
        arrive(signal, value.raw, value.due, value.period);
    } else if (cycle != mCycles.end() && cycle->second.next() == now) {
        tick(cycle);
    } else if (now) {
        mSupervisor.timeOut();
        mOutput.onStatus(*mMessage, true);
    }
}

bool MessageLane::isLate() const {
    return !mLate.empty() || std::any_of(mCycles.begin(), mCycles.end(), [this](const auto& cycle) {
        return mFaults.delayOf(cycle.first, mMessage) > 0.0;
    });
}

// While cycles run and nothing is late, all that a repetition does is done by the last one again, and no time-out can
// come in between.
void MessageLane::skipTo(VehicleTime time) {
    if (!isLate()) {
        for (bool ticks = true; ticks;) {
            for (auto& [signal, cycle] : mCycles) {
                cycle.skipTo(time);
            }
            const auto cycle = nextCycle();
            ticks = cycle != mCycles.end() && cycle->second.next() < time;
            if (ticks) {
                tick(cycle);
            }
        }
    }
    for (std::optional<VehicleTime> due = next(); due && *due < time; due = next()) {
        runNext();
    }
}

}  // namespace qvn::tools
