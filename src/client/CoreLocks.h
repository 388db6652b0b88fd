#ifndef CLIENT_CORE_LOCKS_H
#define CLIENT_CORE_LOCKS_H

#include "callback/CallApplication.h"
#include "client/VehicleClientImpl.h"

namespace qvn {
namespace platform {
namespace vehicle {

// How cacheMutex is held. The thread that dispatches holds it while the application's callback runs; what the
// application calls in there goes on under that. The analysis cannot follow the condition: to it the mutex is taken in
// every case.

/// For a getter or unsubscribe.
class QVN_SCOPED_LOCK VehicleClientImpl::CacheLock {
public:
    explicit CacheLock(VehicleClientImpl& core) QVN_ACQUIRE(core.cacheMutex) QVN_UNCHECKED_LOCKING
        : mMutex(core.dispatchTurn.isMine() ? nullptr : &core.cacheMutex) {
        if (mMutex != nullptr) {
            mMutex->lock();
        }
    }
    ~CacheLock() QVN_RELEASE() QVN_UNCHECKED_LOCKING {
        if (mMutex != nullptr) {
            mMutex->unlock();
        }
    }
    CacheLock(const CacheLock&) = delete;
    CacheLock& operator=(const CacheLock&) = delete;

private:
    sync::Mutex* const mMutex;
};

/// For the whole of a dispatch, also when the application's callback throws: at its end, with the lock given back, the
/// observer is told. What that leads to may end the thread.
class VehicleClientImpl::Telling {
public:
    explicit Telling(VehicleClientImpl& core) : mCore(core) {}
    ~Telling() noexcept(false) {
        if (!mStates.empty()) {
            mCore.tell(mStates);
        }
    }
    Telling(const Telling&) = delete;
    Telling& operator=(const Telling&) = delete;

private:
    friend class DispatchLock;

    VehicleClientImpl& mCore;
    std::vector<PropertyState> mStates;
};

/// For a dispatch, by a thread that has just been given the turn. At the end it delivers what others have left to it.
class QVN_SCOPED_LOCK VehicleClientImpl::DispatchLock {
public:
    DispatchLock(VehicleClientImpl& core, Telling& telling) QVN_ACQUIRE(core.cacheMutex) QVN_UNCHECKED_LOCKING
        : mCore(core),
          mTelling(telling) {
        mCore.cacheMutex.lock();
    }
    ~DispatchLock() QVN_RELEASE() QVN_UNCHECKED_LOCKING {
        DispatchTurn::Delivery left;
        while (!mCore.dispatchTurn.giveBack(left)) {
            callback::callApplication([&] { mCore.deliver(left); });
        }
        if (mCore.observer != nullptr) {
            mCore.takeDispatched(mTelling.mStates);
        }
        mCore.cacheMutex.unlock();
    }
    DispatchLock(const DispatchLock&) = delete;
    DispatchLock& operator=(const DispatchLock&) = delete;

private:
    VehicleClientImpl& mCore;
    Telling& mTelling;
};

}  // namespace vehicle
}  // namespace platform
}  // namespace qvn

#endif  // CLIENT_CORE_LOCKS_H
