#pragma once

#include <chrono>

#include "desk/PollUntil.h"

namespace qvn::tools {

/// The vehicle's own time since the simulator's start. Whatever runs is scheduled by it.
using VehicleTime = std::chrono::nanoseconds;

inline VehicleTime vehicleTime(double seconds) {
    return std::chrono::round<VehicleTime>(std::chrono::duration<double>(seconds));
}

inline double secondsOf(VehicleTime time) {
    return std::chrono::duration<double>(time).count();
}

/// How fast the vehicle's time passes.
class VehicleClock {
public:
    /// It begins now, at zero.
    VehicleClock(double speed, Clock::time_point now) : mSpeed(speed), mAnchor(now) {}

    double speed() const { return mSpeed; }

    VehicleTime at(Clock::time_point time) const {
        return mTime + std::chrono::floor<VehicleTime>((time - mAnchor) * mSpeed);
    }
    /// The first moment at which it shows that time.
    Clock::time_point when(VehicleTime time) const {
        return mAnchor + std::chrono::ceil<Clock::duration>(std::chrono::duration<double, std::nano>(
                             static_cast<double>((time - mTime).count()) / mSpeed));
    }

    /// Goes on from `time` now, at that speed.
    void set(VehicleTime time, double speed, Clock::time_point now) {
        mTime = time;
        mSpeed = speed;
        mAnchor = now;
    }

private:
    double mSpeed;
    Clock::time_point mAnchor;
    VehicleTime mTime{0};
};

}  // namespace qvn::tools
