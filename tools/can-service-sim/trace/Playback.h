#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

#include "can-service-sim/VehicleTime.h"
#include "can-service-sim/trace/TraceEvents.h"

namespace qvn::tools {

/// Plays a trace: knows where it is in it. It knows no clock.
class Playback {
public:
    using Happen = std::function<void(const TraceAction& action, VehicleTime now)>;

    explicit Playback(Happen happen) : mHappen(std::move(happen)) {}

    struct AtEnd {
        bool loop = false;
        std::function<void()> ended;  ///< called at the end unless it loops
    };
    void start(std::vector<TraceEvent> trace, AtEnd atEnd, VehicleTime now);

    const std::vector<TraceEvent>& trace() const { return mTrace; }
    /// Seconds of the trace.
    double length() const { return secondsOf(mLength); }
    double position(VehicleTime now) const;
    bool isPaused() const { return mPausedAt.has_value(); }

    /// When it goes on by itself.
    std::optional<VehicleTime> next() const;
    /// Lets the next event happen, at its time.
    void runNext();
    /// When its last event, or this round of a loop, is over.
    VehicleTime end(VehicleTime now) const { return mPausedAt ? now + mLength - *mPausedAt : mBegin + mLength; }

    void pause(VehicleTime now);
    void resume(VehicleTime now);
    /// Goes to that many seconds of the trace: everything up to there happens, at times that end now.
    void seek(double position, VehicleTime now);

private:
    VehicleTime timeOf(const TraceEvent& event) const { return mBegin + vehicleTime(event.time.value_or(0.0)); }

    Happen mHappen;
    std::vector<TraceEvent> mTrace;
    AtEnd mAtEnd;
    VehicleTime mLength{0};
    VehicleTime mBegin{0};  // when position 0 was or would have been
    std::size_t mNext = 0;
    bool mEnded = false;
    std::optional<VehicleTime> mPausedAt;  // position
};

}  // namespace qvn::tools
