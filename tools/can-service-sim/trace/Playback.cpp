#include "can-service-sim/trace/Playback.h"

#include <algorithm>
#include <utility>

namespace qvn::tools {

void Playback::start(std::vector<TraceEvent> trace, AtEnd atEnd, VehicleTime now) {
    trace_ = std::move(trace);
    atEnd_ = std::move(atEnd);
    length_ = vehicleTime(traceEnd(trace_));
    begin_ = now;
}

double Playback::position(VehicleTime now) const {
    return secondsOf(std::min(length_, pausedAt_.value_or(now - begin_)));
}

std::optional<VehicleTime> Playback::next() const {
    if (pausedAt_ || ended_ || trace_.empty()) {
        return std::nullopt;
    }
    return next_ < trace_.size() ? timeOf(trace_[next_]) : begin_ + length_;
}

void Playback::runNext() {
    if (next_ < trace_.size()) {
        const TraceEvent& event = trace_[next_++];
        happen_(event.action, timeOf(event));
    } else if (atEnd_.loop) {
        begin_ += length_;
        next_ = 0;
    } else {
        ended_ = true;
        if (atEnd_.ended) {
            atEnd_.ended();
        }
    }
}

void Playback::pause(VehicleTime now) {
    if (!pausedAt_) {
        pausedAt_ = now - begin_;
    }
}

void Playback::resume(VehicleTime now) {
    if (pausedAt_) {
        begin_ = now - *std::exchange(pausedAt_, std::nullopt);
    }
}

void Playback::seek(double position, VehicleTime now) {
    begin_ = now - vehicleTime(position);
    for (next_ = 0; next_ < trace_.size() && timeOf(trace_[next_]) <= now; ++next_) {
        happen_(trace_[next_].action, timeOf(trace_[next_]));
    }
    ended_ = false;
    if (pausedAt_) {
        pausedAt_ = now - begin_;
    }
}

}  // namespace qvn::tools
