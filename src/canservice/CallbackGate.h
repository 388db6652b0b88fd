#ifndef CANSERVICE_CALLBACK_GATE_H
#define CANSERVICE_CALLBACK_GATE_H

#include <chrono>
#include <condition_variable>
#include <thread>
#include <vector>

#include "sync/Mutex.h"

/// What every callback of the bus and of the reverse line passes on its way to the application. Once it is closed no
/// further one gets through, and whoever closed it can wait for those that had got through before.
class CallbackGate {
public:
    /// One callback's way through the gate, from construction to destruction on the same thread.
    class Passage {
    public:
        explicit Passage(CallbackGate& gate) : mGate(gate), mInside(gate.enter()) {}
        ~Passage() {
            if (mInside) {
                mGate.leave();
            }
        }
        Passage(const Passage&) = delete;
        Passage& operator=(const Passage&) = delete;

        /// False when the gate is closed: the callback must do nothing.
        explicit operator bool() const { return mInside; }

    private:
        CallbackGate& mGate;
        const bool mInside;
    };

    CallbackGate();

    void close();
    bool isClosed();
    /// Whether the calling thread is inside a callback.
    bool isInside();
    /// Waits until no thread is inside; false when the time is over before. Must not be called inside.
    bool waitUntilEmpty(std::chrono::steady_clock::time_point deadline);

private:
    bool enter();
    void leave();

    qvn::sync::Mutex mMutex;
    std::condition_variable mLeft;
    bool mClosed QVN_GUARDED_BY(mMutex) = false;
    std::vector<std::thread::id> mInside QVN_GUARDED_BY(mMutex);  // a thread that is inside twice stands here twice
};

#endif  // CANSERVICE_CALLBACK_GATE_H
