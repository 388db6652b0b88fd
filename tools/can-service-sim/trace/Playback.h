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

    explicit Playback(Happen happen) : happen_(std::move(happen)) {}

    struct AtEnd {
        bool loop = false;
        std::function<void()> ended;  ///< called at the end unless it loops
    };
    void start(std::vector<TraceEvent> trace, AtEnd atEnd, VehicleTime now);

    const std::vector<TraceEvent>& trace() const { return trace_; }
    /// Seconds of the trace.
    double length() const { return secondsOf(length_); }
    double position(VehicleTime now) const;
    bool isPaused() const { return pausedAt_.has_value(); }

    /// When it goes on by itself.
    std::optional<VehicleTime> next() const;
    /// Lets the next event happen, at its time.
    void runNext();
    /// When its last event, or this round of a loop, is over.
    VehicleTime end(VehicleTime now) const { return pausedAt_ ? now + length_ - *pausedAt_ : begin_ + length_; }

    void pause(VehicleTime now);
    void resume(VehicleTime now);
    /// Goes to that many seconds of the trace: everything up to there happens, at times that end now.
    void seek(double position, VehicleTime now);

private:
    VehicleTime timeOf(const TraceEvent& event) const { return begin_ + vehicleTime(event.time.value_or(0.0)); }

    Happen happen_;
    std::vector<TraceEvent> trace_;
    AtEnd atEnd_;
    VehicleTime length_{0};
    VehicleTime begin_{0};  // when position 0 was or would have been
    std::size_t next_ = 0;
    bool ended_ = false;
    std::optional<VehicleTime> pausedAt_;  // position
};

}  // namespace qvn::tools
