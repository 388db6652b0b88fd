#include "can-service-sim/trace/Playback.h"

#include <algorithm>
#include <utility>

namespace qvn::tools {

void Playback::start(std::vector<TraceEvent> trace, AtEnd atEnd, VehicleTime now) {
    mTrace = std::move(trace);
    mAtEnd = std::move(atEnd);
    mLength = vehicleTime(traceEnd(mTrace));
    mBegin = now;
}

double Playback::position(VehicleTime now) const {
    return secondsOf(std::min(mLength, mPausedAt.value_or(now - mBegin)));
}

std::optional<VehicleTime> Playback::next() const {
    if (mPausedAt || mEnded || mTrace.empty()) {
        return std::nullopt;
    }
    return mNext < mTrace.size() ? timeOf(mTrace[mNext]) : mBegin + mLength;
}

void Playback::runNext() {
    if (mNext < mTrace.size()) {
        const TraceEvent& event = mTrace[mNext++];
        mHappen(event.action, timeOf(event));
    } else if (mAtEnd.loop) {
        mBegin += mLength;
        mNext = 0;
    } else {
        mEnded = true;
        if (mAtEnd.ended) {
            mAtEnd.ended();
        }
    }
}

void Playback::pause(VehicleTime now) {
    if (!mPausedAt) {
        mPausedAt = now - mBegin;
    }
}

void Playback::resume(VehicleTime now) {
    if (mPausedAt) {
        mBegin = now - *std::exchange(mPausedAt, std::nullopt);
    }
}

void Playback::seek(double position, VehicleTime now) {
    mBegin = now - vehicleTime(position);
    for (mNext = 0; mNext < mTrace.size() && timeOf(mTrace[mNext]) <= now; ++mNext) {
        mHappen(mTrace[mNext].action, timeOf(mTrace[mNext]));
    }
    mEnded = false;
    if (mPausedAt) {
        mPausedAt = now - mBegin;
    }
}

}  // namespace qvn::tools
