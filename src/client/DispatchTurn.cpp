#include "client/DispatchTurn.h"

#include <utility>

namespace qvn {
namespace platform {
namespace vehicle {

namespace {

constexpr std::size_t kMostLeft = 64;

}  // namespace

void DispatchTurn::take() {
    sync::MutexLock lock(mMutex);
    ++mWaiting;
    mFree.wait(lock.native(), [this] { return mOwner.load() == std::thread::id(); });
    --mWaiting;
    begin();
}

bool DispatchTurn::takeOrLeave(Delivery& delivery) {
    const sync::MutexLock lock(mMutex);
    if (mOwner.load() == std::thread::id() && mWaiting == 0) {
        begin();
        return true;
    }
    mLeft.push_back(std::move(delivery));
    if (mLeft.size() > kMostLeft) {
        mLeft.pop_front();
    }
    return false;
}

void DispatchTurn::begin() {
    mOwner = std::this_thread::get_id();
    mForOthers = 0;
}

bool DispatchTurn::giveBack(Delivery& next) {
    const sync::MutexLock lock(mMutex);
    if (!mLeft.empty() && (mWaiting == 0 || mForOthers < kMostLeft)) {
        next = std::move(mLeft.front());
        mLeft.pop_front();
        ++mForOthers;
        return false;
    }
    mOwner = std::thread::id();
    mFree.notify_one();
    return true;
}

}  // namespace vehicle
}  // namespace platform
}  // namespace qvn
