#include "can-service-sim/EventLoop.h"

#include <poll.h>

#include <algorithm>
#include <utility>

namespace qvn::tools {

void EventLoop::post(Task task) {
    {
        const sync::MutexLock lock(mutex_);
        posted_.push_back(std::move(task));
    }
    wakeUp_.notify();
}

void EventLoop::watch(int fd, Task readable) {
    input_ = fd;
    inputReadable_ = std::move(readable);
}

void EventLoop::run() {
    while (!ended_) {
        runDue();
        if (!ended_) {
            wait();
        }
    }
}

void EventLoop::wait() {
    timespec timeout{};
    const timespec* limit = nullptr;
    if (!timed_.empty()) {
        const auto left = std::max(timed_.begin()->first - Clock::now(), Clock::duration::zero());
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
        timeout.tv_sec = seconds.count();
        timeout.tv_nsec = std::chrono::nanoseconds(left - seconds).count();
        limit = &timeout;
    }
    pollfd fds[] = {{stop_.fd(), POLLIN, 0}, {wakeUp_.fd(), POLLIN, 0}, {input_, POLLIN, 0}};
    if (ppoll(fds, 3, limit, nullptr) <= 0) {
        return;
    }
    if (fds[0].revents != 0) {
        ended_ = true;
    }
    if (fds[1].revents != 0) {
        wakeUp_.clear();
        runPosted();
    }
    if (fds[2].revents != 0 && !ended_) {
        inputReadable_();
    }
}

void EventLoop::runPosted() {
    std::vector<Task> tasks;
    {
        const sync::MutexLock lock(mutex_);
        tasks.swap(posted_);
    }
    for (const Task& task : tasks) {
        task();
    }
}

void EventLoop::runDue() {
    const Clock::time_point now = Clock::now();
    while (!ended_ && !timed_.empty() && timed_.begin()->first <= now) {
        const Task task = std::move(timed_.begin()->second);
        timed_.erase(timed_.begin());
        task();
    }
}

}  // namespace qvn::tools
