#pragma once

#include <sync/Mutex.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <thread>

namespace qvn::host {

struct LoopContext;  // Asio's, which only the sources of this library include: it is long to compile

/// Runs handlers, at most one at a time, on one thread.
///
/// In a child of fork() the loops that its parent has started are foreign: they do not run, and must not be touched.
/// Their threads do not exist there, their descriptors are shared with the parent, and their mutexes may be locked for
/// ever.
class EventLoop : public std::enable_shared_from_this<EventLoop> {
public:
    /// Throws std::system_error when the system has no descriptors for it.
    EventLoop();
    ~EventLoop();

    LoopContext& context() { return *mContext; }

    /// Runs the loop on a new thread, or on the calling one until stop(). False when it was started before, and on a
    /// foreign loop. Throws std::system_error when the system has no thread to give; it may be started later then.
    bool start(const std::string& threadName, bool inPlace);
    /// From start() until the loop has ended.
    bool running() const { return mRunning && !isForeign(); }
    bool isForeign() const;
    /// Keeps an object of a foreign loop until the process ends, because its destructor would touch the loop.
    static void abandon(std::shared_ptr<void> ofForeignLoop);
    /// Lets the loop end after the handler that is running now.
    void stop();
    /// Waits for the loop's thread; `milliseconds` 0 is without limit. False on that thread, and when time is over.
    bool join(uint32_t milliseconds);
    bool isSelf() const { return mThreadId.load() == std::this_thread::get_id(); }

    /// Lets the loop run a handler, after those that wait already. On a foreign loop it never runs.
    void post(std::function<void()> handler);

    /// Runs `task` while no other handler of the loop runs, and returns when it has run: on the loop, or on the calling
    /// thread when the loop is not running or this is its thread. On a foreign loop it never runs. What the task throws
    /// is thrown here. The task must not call the application.
    void runExclusive(const std::function<void()>& task);

    /// Waits until `done` is set by a thread that then calls signal(); at most `milliseconds`, where positive. False
    /// when the time is over, and when the loop is not running or ends before.
    bool waitForSignal(const std::atomic<bool>& done, int32_t milliseconds);
    void signal();

private:
    struct Task {
        const std::function<void()>* run;
        bool done = false;
        std::exception_ptr thrown = nullptr;
    };

    void startThread(const std::string& name) QVN_REQUIRES(mMutex);
    void run();
    bool runHandlers();
    void runTasksLocked() QVN_REQUIRES(mMutex);

    const std::unique_ptr<LoopContext> mContext;
    std::atomic<std::thread::id> mThreadId{std::thread::id()};

    sync::Mutex mMutex;
    std::condition_variable mChanged;
    std::deque<Task*> mTasks QVN_GUARDED_BY(mMutex);
    std::atomic<bool> mRunning{false};  // changed under mMutex, so that a wait for it misses nothing
    bool mStarted QVN_GUARDED_BY(mMutex) = false;
    std::atomic<int> mGeneration{-1};  // of the process that started it
    std::thread mThread QVN_GUARDED_BY(mMutex);
};

}  // namespace qvn::host
