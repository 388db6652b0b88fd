#ifndef SESSION_SESSIONS_H
#define SESSION_SESSIONS_H

#include <chrono>
#include <condition_variable>
#include <functional>
#include <list>
#include <memory>
#include <vector>

#include "sync/Mutex.h"

namespace qvn {
namespace session {

class Session;

/// The one lock of all sessions: for a few words, never across a call out. Of the library's other locks only the core's
/// leaf is taken under it.
extern sync::Mutex mutex;

/// All sessions of the process, and who waits for whom.
class Sessions {
public:
    using Time = std::chrono::steady_clock::time_point;

    /// Never destroyed: threads may be using it when static objects go.
    static Sessions& instance();

    std::list<Session*>& all() QVN_REQUIRES(mutex) { return mAll; }
    /// For one more: to signal it needs no memory then.
    void makeRoom() QVN_REQUIRES(mutex) { mToSignal.reserve(mAll.size() + 1); }

    /// A handler has returned, or a session has nothing to do.
    void notifyWaiters() QVN_REQUIRES(mutex);

    /// Waits for something that the threads of a session bring about. False when that would be to wait for oneself:
    /// when the calling thread runs a handler of that session, or the session's handler waits for the caller's. False,
    /// too, when the process ends.
    bool waitFor(const Session& session, sync::MutexLock& lock, const std::function<bool()>& done) QVN_REQUIRES(mutex);
    /// Waits until it holds for no session; false when the deadline has passed.
    bool waitForAll(sync::MutexLock& lock, Time deadline, const std::function<bool(const Session&)>& isBusy)
        QVN_REQUIRES(mutex);

    /// What ends all handlers when the process ends.
    void setExitHandler(void (*handler)()) QVN_REQUIRES(mutex) { mExitHandler = handler; }
    /// Has that done before the static objects go that are there now.
    void seeExit() QVN_REQUIRES(mutex);

    // The process ends: first no further handler runs, then nothing is waited for any more.
    void stop() QVN_REQUIRES(mutex) { mStopped = true; }
    bool hasStopped() const QVN_REQUIRES(mutex) { return mStopped; }
    void end() QVN_REQUIRES(mutex) {
        mEnded = true;
        notifyWaiters();
    }
    bool hasEnded() const QVN_REQUIRES(mutex) { return mEnded; }

private:
    friend class Change;

    bool isForItself(const Session& session) const QVN_REQUIRES(mutex);
    void setWaiting(const Session* session) QVN_REQUIRES(mutex);

    std::list<Session*> mAll QVN_GUARDED_BY(mutex);
    std::vector<std::shared_ptr<Session>> mToSignal QVN_GUARDED_BY(mutex);
    std::condition_variable mSettled;
    void (*mExitHandler)() QVN_GUARDED_BY(mutex) = nullptr;
    int mExitHandlers QVN_GUARDED_BY(mutex) = 0;  // registered
    int mWaiting QVN_GUARDED_BY(mutex) = 0;
    bool mStopped QVN_GUARDED_BY(mutex) = false;
    bool mEnded QVN_GUARDED_BY(mutex) = false;
};

/// Holds the lock. At its end, with the lock given back, it signals the sessions that have got work meanwhile: with an
/// executor that may run handlers, and they may end the thread.
class QVN_SCOPED_LOCK Change {
public:
    Change() QVN_ACQUIRE(mutex);
    ~Change() noexcept(false) QVN_RELEASE();
    Change(const Change&) = delete;
    Change& operator=(const Change&) = delete;

    static void willSignal(Session& session) QVN_REQUIRES(mutex);
};

}  // namespace session
}  // namespace qvn

#endif  // SESSION_SESSIONS_H
