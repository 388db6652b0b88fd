#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <optional>
#include <vector>

#include "can-service-sim/Vehicle.h"
#include "can-service-sim/VehicleTime.h"
#include "can-service-sim/trace/Playback.h"

namespace qvn::tools {

/// A vehicle, the trace that is played to it, and what is to be done later, all on the vehicle's own time: whatever
/// runs goes faster and slower together. Time passes in run() only.
class Simulation {
public:
    using Now = std::function<Clock::time_point()>;
    using Task = std::function<void()>;

    /// @param now the time of the world outside, which never goes back
    Simulation(Now now, double speed, Vehicle::Observer& observer, bool initialValues, CanDecoder* decoder);

    /// Offers the service and plays. With `startAt` it begins at that second of the trace, in the state that the trace
    /// has reached by then. A trace may keep the service off from its beginning.
    void start(std::vector<TraceEvent> trace, Playback::AtEnd atEnd, std::optional<double> startAt);

    /// Lets happen what is due, but not for longer than an event loop may be kept: next() tells when to call it again.
    void run();
    std::optional<Clock::time_point> next() const;

    /// Lets an action happen at time(): for tasks.
    void happen(const TraceAction& action) { mVehicle.apply(action, mTime); }

    // Each of these first lets happen what is due. None is called by a task.
    void apply(const TraceAction& action);
    void pause();
    void resume();
    void setSpeed(double speed);
    /// Goes to that many seconds of the trace: the state is that of playing up to there, and what was given by other
    /// means to what the trace is not about, but for cycles and courses, faults and time-outs, which end.
    void seek(double position);

    /// The vehicle's time up to which everything has happened.
    VehicleTime time() const { return mTime; }
    /// The vehicle's time now: the same, unless it is behind.
    VehicleTime timeNow() const { return std::max(mTime, mClock.at(mNow())); }
    /// Does something at a time of the vehicle's.
    void at(VehicleTime time, Task task);
    /// Does something when the trace, or this round of it, and all other tasks are done.
    void whenDone(Task task);

    const Playback& playback() const { return mPlayback; }
    const Vehicle& vehicle() const { return mVehicle; }
    double speed() const { return mClock.speed(); }

private:
    bool runNext(VehicleTime limit);

    Now mNow;
    VehicleClock mClock;
    VehicleTime mTime{0};
    Vehicle mVehicle;
    Playback mPlayback;
    std::multimap<VehicleTime, Task> mTasks;
};

}  // namespace qvn::tools
