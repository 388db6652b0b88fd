#include "EventLoop.h"

#include <pthread.h>

#include <chrono>

namespace fdb {

EventLoop::EventLoop() {
    mWork.emplace(mContext.get_executor());
}

EventLoop::~EventLoop() {
    if (mThread.joinable()) {
        // The thread holds its loop: it has ended, or it is this one, that has let go of it last.
        mThread.get_id() == std::this_thread::get_id() ? mThread.detach() : mThread.join();
    }
}

bool EventLoop::start(const std::string& threadName, bool inPlace) {
    {
        std::lock_guard<std::mutex> lock(mMutex);
        if (mRunning) {
            return true;
        }
        if (mThread.joinable()) {
            mThread.join();  // a loop that has ended before
        }
        mContext.restart();
        mRunning = true;
        if (!inPlace) {
            mThread = std::thread([self = shared_from_this(), threadName] {
                pthread_setname_np(pthread_self(), threadName.substr(0, 15).c_str());
                self->run();
            });
            return true;
        }
    }
    run();
    return true;
}

void EventLoop::run() {
    mThreadId = std::this_thread::get_id();
    mContext.run();
    mThreadId = std::thread::id();

    std::lock_guard<std::mutex> lock(mMutex);
    mRunning = false;
    runTasksLocked();
}

void EventLoop::stop() {
    mContext.stop();
}

bool EventLoop::join(uint32_t milliseconds) {
    if (isSelf()) {
        return false;
    }
    std::unique_lock<std::mutex> lock(mMutex);
    const auto ended = [this] { return !mRunning; };
    if (milliseconds == 0) {
        mChanged.wait(lock, ended);
    } else if (!mChanged.wait_for(lock, std::chrono::milliseconds(milliseconds), ended)) {
        return false;
    }
    std::thread thread = std::move(mThread);
    lock.unlock();
    if (thread.joinable()) {
        thread.join();
    }
    return true;
}

void EventLoop::runExclusive(const std::function<void()>& task) {
    if (isSelf()) {
        task();
        return;
    }
    std::unique_lock<std::mutex> lock(mMutex);
    if (!mRunning) {
        task();
        return;
    }
    Task pending{&task};
    mTasks.push_back(&pending);
    post([this] {
        std::lock_guard<std::mutex> running(mMutex);
        runTasksLocked();
    });
    mChanged.wait(lock, [&pending] { return pending.done; });
}

bool EventLoop::waitForSignal(const std::atomic<bool>& done, int32_t milliseconds) {
    std::unique_lock<std::mutex> lock(mMutex);
    const auto over = [&] { return done || !mRunning; };
    if (milliseconds > 0) {
        mChanged.wait_for(lock, std::chrono::milliseconds(milliseconds), over);
    } else {
        mChanged.wait(lock, over);
    }
    return done;
}

void EventLoop::signal() {
    std::lock_guard<std::mutex> lock(mMutex);
    mChanged.notify_all();
}

void EventLoop::runTasksLocked() {
    for (Task* task : mTasks) {
        (*task->run)();
        task->done = true;
    }
    mTasks.clear();
    mChanged.notify_all();
}

}  // namespace fdb
