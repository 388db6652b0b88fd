#include "host/EventLoop.h"

#include <pthread.h>

#include <asio/post.hpp>
#include <asio/steady_timer.hpp>

#include <chrono>
#include <new>
#include <system_error>
#include <utility>
#include <vector>

#include "LoopContext.h"
#include "host/Log.h"

namespace qvn::host {

using sync::MutexLock;

namespace {

/// How many forks lie between the program's start and this process.
/// A process id would tell the same, at the price of a system call for every message.
std::atomic<int> generation{0};

[[maybe_unused]] const int counted = pthread_atfork(nullptr, nullptr, [] { ++generation; });

}  // namespace

EventLoop::EventLoop() : mContext(std::make_unique<LoopContext>()) {
    // A first timer opens the loop's own descriptors. Here a lack of them reaches the caller; on the loop it would end
    // the process.
    const asio::steady_timer first(mContext->io);
}

EventLoop::~EventLoop() {
    if (mThread.joinable()) {
        // The thread owns a reference to its loop: either it has ended, or this is the thread, which had the last one.
        mThread.get_id() == std::this_thread::get_id() ? mThread.detach() : mThread.join();
    }
}

bool EventLoop::isForeign() const {
    const int itsOwn = mGeneration;
    return itsOwn >= 0 && itsOwn != generation;
}

void EventLoop::abandon(std::shared_ptr<void> ofForeignLoop) {
    static auto& abandoned = *new std::vector<std::shared_ptr<void>>;
    abandoned.push_back(std::move(ofForeignLoop));
}

bool EventLoop::start(const std::string& threadName, bool inPlace) {
    if (isForeign()) {
        return false;
    }
    {
        const MutexLock lock(mMutex);
        if (mStarted) {
            return false;
        }
        mStarted = mRunning = true;
        mGeneration = generation.load();
        if (!inPlace) {
            startThread(threadName);
            return true;
        }
    }
    run();
    return true;
}

void EventLoop::startThread(const std::string& name) {
    try {
        mThread = std::thread([self = shared_from_this(), name] {
            pthread_setname_np(pthread_self(), name.substr(0, 15).c_str());
            self->run();
        });
    } catch (const std::system_error&) {
        mStarted = mRunning = false;
        throw;
    }
}

void EventLoop::run() {
    mThreadId = std::this_thread::get_id();
    while (!runHandlers()) {
    }
    mThreadId = std::thread::id();

    const MutexLock lock(mMutex);
    mRunning = false;
    runTasksLocked();
}

/// False when a handler has met a lack of memory; the others are still to be run.
bool EventLoop::runHandlers() {
    try {
        mContext->io.run();
        return true;
    } catch (const std::bad_alloc&) {
        lgklog_print(kLogError, "host: out of memory, something that has arrived is lost");
        return false;
    }
}

void EventLoop::stop() {
    mContext->io.stop();
}

bool EventLoop::join(uint32_t milliseconds) {
    if (isForeign() || isSelf()) {
        return false;
    }
    MutexLock lock(mMutex);
    const auto ended = [this] { return !mRunning; };
    if (milliseconds == 0) {
        mChanged.wait(lock.native(), ended);
    } else if (!mChanged.wait_for(lock.native(), std::chrono::milliseconds(milliseconds), ended)) {
        return false;
    }
    std::thread thread = std::move(mThread);
    lock.unlock();
    if (thread.joinable()) {
        thread.join();
    }
    return true;
}

void EventLoop::post(std::function<void()> handler) {
    if (!isForeign()) {
        asio::post(mContext->io, std::move(handler));
    }
}

void EventLoop::runExclusive(const std::function<void()>& task) {
    if (isForeign()) {
        return;
    }
    if (isSelf()) {
        task();
        return;
    }
    MutexLock lock(mMutex);
    if (!mRunning) {
        task();
        return;
    }
    post([this] {
        const MutexLock running(mMutex);
        runTasksLocked();
    });
    Task pending{&task};
    mTasks.push_back(&pending);  // the last thing that may fail: an entry that stays would point to nothing
    mChanged.wait(lock.native(), [&pending] { return pending.done; });
    if (pending.thrown) {
        std::rethrow_exception(pending.thrown);
    }
}

bool EventLoop::waitForSignal(const std::atomic<bool>& done, int32_t milliseconds) {
    MutexLock lock(mMutex);
    const auto over = [&] { return done || !mRunning; };
    if (milliseconds > 0) {
        mChanged.wait_for(lock.native(), std::chrono::milliseconds(milliseconds), over);
    } else {
        mChanged.wait(lock.native(), over);
    }
    return done;
}

void EventLoop::signal() {
    const MutexLock lock(mMutex);
    mChanged.notify_all();
}

void EventLoop::runTasksLocked() {
    for (Task* task : mTasks) {
        try {
            (*task->run)();
        } catch (...) {
            task->thrown = std::current_exception();
        }
        task->done = true;
    }
    mTasks.clear();
    mChanged.notify_all();
}

}  // namespace qvn::host
