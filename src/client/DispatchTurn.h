#ifndef CLIENT_DISPATCH_TURN_H
#define CLIENT_DISPATCH_TURN_H

#include <vehicle/VehicleProperty.h>

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <thread>

#include "sync/Mutex.h"

namespace qvn {
namespace platform {
namespace vehicle {

/// Values are delivered by one thread at a time: the one that has the turn. A thread that must not wait for it leaves
/// its value here, and whoever has the turn delivers it before giving the turn back. Threads that leave one value after
/// the other hold nobody up: after some of theirs the turn goes to a thread that waits for it, with the rest. Of more
/// than 64 that wait the oldest are forgotten.
class DispatchTurn {
public:
    struct Delivery {
        VehiclePropValue value;
        PropertyType type;
    };

    /// Whether the calling thread has the turn: it is then inside a callback of its own dispatch, or about to call one.
    bool isMine() const { return mOwner.load(std::memory_order_relaxed) == std::this_thread::get_id(); }
    /// Waits while another thread has the turn. The calling thread must not have it.
    void take();
    /// The same without waiting: when another thread has the turn, or waits for it, the delivery is left to that one.
    /// False then.
    bool takeOrLeave(Delivery& delivery);
    /// Gives the turn back, unless something was left to this thread meanwhile. False then: the turn goes on, and
    /// `next` is what to deliver.
    bool giveBack(Delivery& next);

private:
    void begin() QVN_REQUIRES(mMutex);

    // Written under the mutex. Only a thread itself can find itself here: reading needs no order.
    std::atomic<std::thread::id> mOwner{std::thread::id()};
    sync::Mutex mMutex;
    std::condition_variable mFree;
    std::deque<Delivery> mLeft QVN_GUARDED_BY(mMutex);
    int mWaiting QVN_GUARDED_BY(mMutex) = 0;            // threads
    std::size_t mForOthers QVN_GUARDED_BY(mMutex) = 0;  // deliveries of this turn
};

}  // namespace vehicle
}  // namespace platform
}  // namespace qvn

#endif  // CLIENT_DISPATCH_TURN_H
