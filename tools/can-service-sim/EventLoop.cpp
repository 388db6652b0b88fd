#include "can-service-sim/EventLoop.h"

#include <optional>
#include <utility>

namespace qvn::tools {

void EventLoop::post(Task task) {
    {
        const sync::MutexLock lock(mMutex);
        if (!mTakesPosts) {
            return;
        }
        mPosted.push_back(std::move(task));
    }
    mWakeUp.notify();
}

void EventLoop::watch(int fd, Task readable) {
    mInputs[fd] = std::move(readable);
}

void EventLoop::run() {
    const Closing closing{*this};
    while (!mEnded) {
        runDue();
        if (!mEnded) {
            wait();
        }
    }
}

/// Whoever waits for a task must learn that it will not run, however the loop has ended.
EventLoop::Closing::~Closing() {
    {
        const sync::MutexLock lock(loop.mMutex);
        loop.mTakesPosts = false;
    }
    loop.takePosted();
}

void EventLoop::wait() {
    std::optional<Clock::time_point> next;
    if (!mTimed.empty()) {
        next = mTimed.begin()->first;
    }
    std::vector<pollfd> fds = {{mStop.fd(), POLLIN, 0}, {mWakeUp.fd(), POLLIN, 0}};
    for (const auto& [fd, readable] : mInputs) {
        fds.push_back({fd, POLLIN, 0});
    }
    if (pollUntil(fds.data(), fds.size(), next) <= 0) {
        return;
    }
    if (fds[0].revents != 0) {
        mEnded = true;
    }
    if (fds[1].revents != 0) {
        mWakeUp.clear();
        runPosted();
    }
    for (std::size_t i = 2; i < fds.size() && !mEnded; ++i) {
        // What ran before may have ended the watch.
        const auto input = mInputs.find(fds[i].fd);
        if (fds[i].revents != 0 && input != mInputs.end()) {
            const Task readable = input->second;
            readable();
        }
    }
}

void EventLoop::runPosted() {
    for (const Task& task : takePosted()) {
        task();
    }
}

std::vector<EventLoop::Task> EventLoop::takePosted() {
    std::vector<Task> tasks;
    const sync::MutexLock lock(mMutex);
    tasks.swap(mPosted);
    return tasks;
}

void EventLoop::runDue() {
    const Clock::time_point now = Clock::now();
    while (!mEnded && !mTimed.empty() && mTimed.begin()->first <= now) {
        const Task task = std::move(mTimed.begin()->second);
        mTimed.erase(mTimed.begin());
        task();
    }
}

}  // namespace qvn::tools
