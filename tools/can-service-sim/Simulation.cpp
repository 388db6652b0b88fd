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
    : now_(std::move(now)),
      clock_(speed, now_()),
      vehicle_(observer, initialValues, decoder),
      playback_([this](const TraceAction& action, VehicleTime time) { vehicle_.apply(action, time); }) {}

void Simulation::start(std::vector<TraceEvent> trace, Playback::AtEnd atEnd, std::optional<double> startAt) {
    clock_.set(time_, clock_.speed(), now_());
    const bool off = std::any_of(trace.begin(), trace.end(), keepsServiceOff);
    playback_.start(std::move(trace), std::move(atEnd), time_);
    if (startAt) {
        vehicle_.playSilently(playback_.trace(), time_, [&] {
            vehicle_.apply(ServiceEvent{true}, time_);
            playback_.seek(*startAt, time_);
        });
        clock_.set(time_, clock_.speed(), now_());
    } else if (!off) {
        vehicle_.apply(ServiceEvent{true}, time_);
    }
}

void Simulation::run() {
    const Clock::time_point begin = now_();
    const VehicleTime limit = timeNow();
    for (int steps = 1; runNext(limit); ++steps) {
        if (steps % kStepsBetween == 0 && now_() - begin >= kLongestTurn) {
            const Clock::time_point now = now_();
            if (now - clock_.when(time_) > kMostBehind) {
                clock_.set(time_, clock_.speed(), now);
            }
            return;
        }
    }
    time_ = limit;
}

/// Of what is due at the same time, the trace comes first, and what goes on by itself last.
bool Simulation::runNext(VehicleTime limit) {
    const std::optional<VehicleTime> trace = playback_.next();
    const std::optional<VehicleTime> vehicle = vehicle_.next();
    const std::optional<VehicleTime> task = tasks_.empty() ? std::nullopt : std::optional(tasks_.begin()->first);
    VehicleTime next = VehicleTime::max();
    for (const auto& time : {trace, task, vehicle}) {
        next = std::min(next, time.value_or(next));
    }
    if (next > limit || next == VehicleTime::max()) {
        return false;
    }
    time_ = std::max(time_, next);
    if (trace == next) {
        playback_.runNext();
    } else if (task == next) {
        const Task due = std::move(tasks_.begin()->second);
        tasks_.erase(tasks_.begin());
        due();
    } else {
        vehicle_.runNext();
    }
    return true;
}

std::optional<Clock::time_point> Simulation::next() const {
    std::optional<VehicleTime> next = playback_.next();
    const auto take = [&next](VehicleTime time) { next = next ? std::min(*next, time) : time; };
    if (!tasks_.empty()) {
        take(tasks_.begin()->first);
    }
    if (const std::optional<VehicleTime> vehicle = vehicle_.next()) {
        take(*vehicle);
    }
    return next ? std::optional(clock_.when(*next)) : std::nullopt;
}

void Simulation::apply(const TraceAction& action) {
    run();
    happen(action);
}

void Simulation::pause() {
    run();
    playback_.pause(time_);
}

void Simulation::resume() {
    run();
    playback_.resume(time_);
}

void Simulation::setSpeed(double speed) {
    run();
    clock_.set(time_, speed, now_());
}

void Simulation::seek(double position) {
    run();
    vehicle_.playSilently(playback_.trace(), time_, [&] { playback_.seek(position, time_); });
    clock_.set(time_, clock_.speed(), now_());  // what that took does not count
}

void Simulation::at(VehicleTime time, Task task) {
    tasks_.emplace(std::max(time, time_), std::move(task));
}

void Simulation::whenDone(Task task) {
    run();
    const VehicleTime last = tasks_.empty() ? time_ : tasks_.rbegin()->first;
    at(std::max(last, playback_.trace().empty() ? time_ : playback_.end(time_)), std::move(task));
}

}  // namespace qvn::tools
