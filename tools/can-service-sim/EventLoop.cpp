#include "can-service-sim/EventLoop.h"

#include <optional>
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
    std::optional<Clock::time_point> next;
    if (!timed_.empty()) {
        next = timed_.begin()->first;
    }
    pollfd fds[] = {{stop_.fd(), POLLIN, 0}, {wakeUp_.fd(), POLLIN, 0}, {input_, POLLIN, 0}};
    if (pollUntil(fds, 3, next) <= 0) {
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
