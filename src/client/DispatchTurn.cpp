#include "client/DispatchTurn.h"

#include <utility>

namespace qvn {
namespace platform {
namespace vehicle {

void DispatchTurn::take() {
    sync::MutexLock lock(mMutex);
    mFree.wait(lock.native(), [this] { return mOwner.load() == std::thread::id(); });
    mOwner = std::this_thread::get_id();
}

bool DispatchTurn::takeOrLeave(Delivery& delivery) {
    const sync::MutexLock lock(mMutex);
    if (mOwner.load() != std::thread::id()) {
        mLeft.push_back(std::move(delivery));
        return false;
    }
    mOwner = std::this_thread::get_id();
    return true;
}

bool DispatchTurn::giveBack(Delivery& next) {
    const sync::MutexLock lock(mMutex);
    if (!mLeft.empty()) {
        next = std::move(mLeft.front());
        mLeft.pop_front();
        return false;
    }
    mOwner = std::thread::id();
    mFree.notify_one();
    return true;
}

}  // namespace vehicle
}  // namespace platform
}  // namespace qvn
