#include "can-service-sim/EventLoop.h"

#include <optional>
#include <utility>

namespace qvn::tools {

void EventLoop::post(Task task) {
    {
        const sync::MutexLock lock(mutex_);
        if (!takesPosts_) {
            return;
        }
        posted_.push_back(std::move(task));
    }
    wakeUp_.notify();
}

void EventLoop::watch(int fd, Task readable) {
    inputs_[fd] = std::move(readable);
}

void EventLoop::run() {
    const Closing closing{*this};
    while (!ended_) {
        runDue();
        if (!ended_) {
            wait();
        }
    }
}

/// Whoever waits for a task must learn that it will not run, however the loop has ended.
EventLoop::Closing::~Closing() {
    {
        const sync::MutexLock lock(loop.mutex_);
        loop.takesPosts_ = false;
    }
    loop.takePosted();
}

void EventLoop::wait() {
    std::optional<Clock::time_point> next;
    if (!timed_.empty()) {
        next = timed_.begin()->first;
    }
    std::vector<pollfd> fds = {{stop_.fd(), POLLIN, 0}, {wakeUp_.fd(), POLLIN, 0}};
    for (const auto& [fd, readable] : inputs_) {
        fds.push_back({fd, POLLIN, 0});
    }
    if (pollUntil(fds.data(), fds.size(), next) <= 0) {
        return;
    }
    if (fds[0].revents != 0) {
        ended_ = true;
    }
    if (fds[1].revents != 0) {
        wakeUp_.clear();
        runPosted();
    }
    for (std::size_t i = 2; i < fds.size() && !ended_; ++i) {
        // What ran before may have ended the watch.
        const auto input = inputs_.find(fds[i].fd);
        if (fds[i].revents != 0 && input != inputs_.end()) {
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
    const sync::MutexLock lock(mutex_);
    tasks.swap(posted_);
    return tasks;
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
