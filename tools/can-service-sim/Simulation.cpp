#include "can-service-sim/Simulation.h"

#include <algorithm>
#include <utility>

namespace qvn::tools {
namespace {

// How long other things wait for what is due, and after how much of it the time is looked at.
constexpr std::chrono::milliseconds kLongestTurn(10);
constexpr int kStepsBetween = 64;
// A machine that is further behind than this plays more slowly instead.
constexpr std::chrono::seconds kMostBehind(1);

bool keepsServiceOff(const TraceEvent& event) {
    const auto* const service = std::get_if<ServiceEvent>(&event.action);
    return service && !service->up && event.time == 0.0;
}

}  // namespace

Simulation::Simulation(Now now, double speed, Vehicle::Observer& observer, bool initialValues, CanDecoder* decoder)
    : mNow(std::move(now)),
      mClock(speed, mNow()),
      mVehicle(observer, initialValues, decoder),
      mPlayback([this](const TraceAction& action, VehicleTime time) { mVehicle.apply(action, time); }) {}

void Simulation::start(std::vector<TraceEvent> trace, Playback::AtEnd atEnd, std::optional<double> startAt) {
    mClock.set(mTime, mClock.speed(), mNow());
    const bool off = std::any_of(trace.begin(), trace.end(), keepsServiceOff);
    mPlayback.start(std::move(trace), std::move(atEnd), mTime);
    if (startAt) {
        mVehicle.playSilently(mPlayback.trace(), mTime, [&] {
            mVehicle.apply(ServiceEvent{true}, mTime);
            mPlayback.seek(*startAt, mTime);
        });
        mClock.set(mTime, mClock.speed(), mNow());
    } else if (!off) {
        mVehicle.apply(ServiceEvent{true}, mTime);
    }
}

void Simulation::run() {
    const Clock::time_point begin = mNow();
    const VehicleTime limit = timeNow();
    for (int steps = 1; runNext(limit); ++steps) {
        if (steps % kStepsBetween == 0 && mNow() - begin >= kLongestTurn) {
            const Clock::time_point now = mNow();
            if (now - mClock.when(mTime) > kMostBehind) {
                mClock.set(mTime, mClock.speed(), now);
            }
            return;
        }
    }
    mTime = limit;
}

/// Of what is due at the same time, the trace comes first, and what goes on by itself last.
bool Simulation::runNext(VehicleTime limit) {
    const std::optional<VehicleTime> trace = mPlayback.next();
    const std::optional<VehicleTime> vehicle = mVehicle.next();
    const std::optional<VehicleTime> task = mTasks.empty() ? std::nullopt : std::optional(mTasks.begin()->first);
    VehicleTime next = VehicleTime::max();
    for (const auto& time : {trace, task, vehicle}) {
        next = std::min(next, time.value_or(next));
    }
    if (next > limit || next == VehicleTime::max()) {
        return false;
    }
    mTime = std::max(mTime, next);
    if (trace == next) {
        mPlayback.runNext();
    } else if (task == next) {
        const Task due = std::move(mTasks.begin()->second);
        mTasks.erase(mTasks.begin());
        due();
    } else {
        mVehicle.runNext();
    }
    return true;
}

std::optional<Clock::time_point> Simulation::next() const {
    std::optional<VehicleTime> next = mPlayback.next();
    const auto take = [&next](VehicleTime time) { next = next ? std::min(*next, time) : time; };
    if (!mTasks.empty()) {
        take(mTasks.begin()->first);
    }
    if (const std::optional<VehicleTime> vehicle = mVehicle.next()) {
        take(*vehicle);
    }
    return next ? std::optional(mClock.when(*next)) : std::nullopt;
}

void Simulation::apply(const TraceAction& action) {
    run();
    happen(action);
}

void Simulation::pause() {
    run();
    mPlayback.pause(mTime);
}

void Simulation::resume() {
    run();
    mPlayback.resume(mTime);
}

void Simulation::setSpeed(double speed) {
    run();
    mClock.set(mTime, speed, mNow());
}

void Simulation::seek(double position) {
    run();
    mVehicle.playSilently(mPlayback.trace(), mTime, [&] { mPlayback.seek(position, mTime); });
    mClock.set(mTime, mClock.speed(), mNow());  // what that took does not count
}

void Simulation::at(VehicleTime time, Task task) {
    mTasks.emplace(std::max(time, mTime), std::move(task));
}

void Simulation::whenDone(Task task) {
    run();
    const VehicleTime last = mTasks.empty() ? mTime : mTasks.rbegin()->first;
    at(std::max(last, mPlayback.trace().empty() ? mTime : mPlayback.end(mTime)), std::move(task));
}

}  // namespace qvn::tools
