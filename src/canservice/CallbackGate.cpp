#include "canservice/CallbackGate.h"

#include <algorithm>

using qvn::sync::MutexLock;

namespace {

// The worker and the GPIO thread, each with an application that causes a callback inside a callback.
constexpr std::size_t kUsualDepth = 8;

}  // namespace

CallbackGate::CallbackGate() {
    mInside.reserve(kUsualDepth);
}

void CallbackGate::close() {
    const MutexLock lock(mMutex);
    mClosed = true;
}

bool CallbackGate::isClosed() {
    const MutexLock lock(mMutex);
    return mClosed;
}

bool CallbackGate::isInside() {
    const MutexLock lock(mMutex);
    return std::find(mInside.begin(), mInside.end(), std::this_thread::get_id()) != mInside.end();
}

bool CallbackGate::waitUntilEmpty(std::chrono::steady_clock::time_point deadline) {
    MutexLock lock(mMutex);
    return mLeft.wait_until(lock.native(), deadline, [this]() QVN_REQUIRES(mMutex) { return mInside.empty(); });
}

bool CallbackGate::enter() {
    const MutexLock lock(mMutex);
    if (mClosed) {
        return false;
    }
    mInside.push_back(std::this_thread::get_id());
    return true;
}

void CallbackGate::leave() {
    const MutexLock lock(mMutex);
    mInside.erase(std::find(mInside.begin(), mInside.end(), std::this_thread::get_id()));
    mLeft.notify_all();
}
