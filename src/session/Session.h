#ifndef SESSION_SESSION_H
#define SESSION_SESSION_H

#include <vehicle/VehicleSession.h>

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "session/Mailbox.h"
#include "session/Sessions.h"

namespace qvn {
namespace session {

using Time = Mailbox::Time;

/// One subscription: who is told, and what waits for them.
class Receiver {
public:
    using Handler = std::function<void(const PropertyState&)>;

    Receiver(std::weak_ptr<Session> itsSession, std::vector<int> itsProperties, Handler itsHandler,
             const SubscribeOptions& options)
        : session(std::move(itsSession)),
          properties(std::move(itsProperties)),
          handler(std::move(itsHandler)),
          mailbox(options, properties.size()) {}

    const std::weak_ptr<Session> session;
    const std::vector<int> properties;
    Handler handler;  // touched by who runs it, and when it has ended and does not run

    // All below is guarded by the lock.
    Mailbox mailbox;
    bool ended = false;
    std::list<std::shared_ptr<Receiver>>::iterator place;  // among the session's
};

/// Runs the handlers of its receivers one at a time, in the order in which updates came to wait for them: on a thread
/// of its own, or where its executor takes them; then the thread is there for what is held back until its time has
/// come.
class Session : public std::enable_shared_from_this<Session> {
public:
    using Task = std::function<void()>;
    using Executor = std::function<void(const Task&)>;
    using Receivers = std::list<std::shared_ptr<Receiver>>;

    explicit Session(Executor executor);

    /// Starts its thread. To be called once, with the session in a std::shared_ptr.
    /// @throws std::system_error
    void start();
    /// No further handler begins to run.
    void close() QVN_REQUIRES(mutex);
    bool isClosed() const QVN_REQUIRES(mutex) { return mEnded; }
    /// Nothing runs any more when it returns, where that is not to wait for itself. To be called once, after close().
    void end();

    void add(const std::shared_ptr<Receiver>& receiver) QVN_REQUIRES(mutex);
    /// Nothing is given to it any more. What is returned is to be destroyed when the lock is given back.
    std::shared_ptr<Receiver> remove(Receiver& receiver) QVN_REQUIRES(mutex);
    /// One that was added and not removed; null when there is none.
    std::shared_ptr<Receiver> anyReceiver() const QVN_REQUIRES(mutex);
    void offer(Receiver& receiver, std::size_t index, const PropertyState& state, Time now) QVN_REQUIRES(mutex);
    /// Runs a task among the handlers. It is in a list already: to make one may call the application's copy
    /// constructors.
    void run(std::list<Task>& task) QVN_REQUIRES(mutex);

    /// Tells whoever runs the handlers that there is work. To be called without the lock.
    void signal();

    bool isRunning(const Receiver& receiver) const QVN_REQUIRES(mutex) { return mRunning == &receiver; }
    bool isRunBy(std::thread::id thread) const QVN_REQUIRES(mutex) { return mRunner == thread; }
    /// Whether a thread other than the calling one is inside a handler or the executor.
    bool isOccupied() const QVN_REQUIRES(mutex);
    /// Whether the calling thread is.
    bool isInside() const QVN_REQUIRES(mutex);
    /// Whether something is left for the session's own thread to do.
    bool isBusy() const QVN_REQUIRES(mutex);
    /// The property whose handler is at work, or about to be; 0: none.
    int busyWith() const QVN_REQUIRES(mutex);

    /// A static session is destroyed before the client's traffic ends, and must not wait for a handler that hangs. What
    /// is registered when a session is first used is done before the session goes; what is registered when its first
    /// handler runs, before an object that has subscribed in its own constructor goes.
    void willBeUsed() QVN_REQUIRES(mutex) { seeExit(mIsUsed); }

    // The session for whose handler the one that runs here waits. Guarded by the lock.
    const Session* waitsFor = nullptr;

private:
    class Running;
    class Posting;
    struct Work {
        std::shared_ptr<Receiver> receiver;  // null: it is a task
        PropertyState state;
        Task task;
    };
    struct HeldBack {
        Time until;
        Receiver* receiver;
        std::size_t index;
    };
    static bool comesLater(const HeldBack& a, const HeldBack& b) { return a.until > b.until; }

    static void seeExit(bool& seen) QVN_REQUIRES(mutex);
    void serve();
    bool waitForWork();
    void keepTime();
    void sleep(sync::MutexLock& lock) QVN_REQUIRES(mutex);
    void drain();
    void post();
    bool runOne();
    bool next(Work& work) QVN_REQUIRES(mutex);
    bool hasWork() const QVN_REQUIRES(mutex) { return mayRun() && !mTurns.empty(); }
    bool mayRun() const QVN_REQUIRES(mutex) { return !mEnded && !Sessions::instance().hasStopped(); }
    void makeRoom() QVN_REQUIRES(mutex);
    void willTake(Receiver* receiver) QVN_REQUIRES(mutex);
    void workHasCome() QVN_REQUIRES(mutex);
    void holdBack(Receiver& receiver, std::size_t index) QVN_REQUIRES(mutex);
    void release() QVN_REQUIRES(mutex);

    const Executor mExecutor;
    Task mDrain;  // what the executor is given
    std::thread mThread;
    std::condition_variable mWake;

    Receivers mReceivers QVN_GUARDED_BY(mutex);
    std::list<Receiver*> mTurns QVN_GUARDED_BY(mutex);       // one for each update that waits; null: the next task
    std::list<Receiver*> mSpareTurns QVN_GUARDED_BY(mutex);  // to be used again
    std::list<Task> mTasks QVN_GUARDED_BY(mutex);
    std::vector<HeldBack> mHeldBack QVN_GUARDED_BY(mutex);  // a heap; the first one's time comes first
    Time mSleepsUntil QVN_GUARDED_BY(mutex) = Time::min();  // the thread
    bool mEnded QVN_GUARDED_BY(mutex) = false;
    bool mIsUsed QVN_GUARDED_BY(mutex) = false;
    bool mHasRun QVN_GUARDED_BY(mutex) = false;   // a handler
    bool mIsAwake QVN_GUARDED_BY(mutex) = false;  // who runs the handlers looks for work by itself

    std::thread::id mRunner QVN_GUARDED_BY(mutex);
    const Receiver* mRunning QVN_GUARDED_BY(mutex) = nullptr;
    std::vector<std::thread::id> mPosters QVN_GUARDED_BY(mutex);  // inside the executor
};

}  // namespace session
}  // namespace qvn

#endif  // SESSION_SESSION_H
