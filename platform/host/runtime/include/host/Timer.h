#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <thread>

#include "host/EventLoop.h"

namespace qvn::host {

/// Calls a function on a loop, once and later. One thread at a time, as LoopDescriptor.
class Timer {
public:
    explicit Timer(EventLoop& loop) : mLoop(&loop) {}

    /// Calls `action` after `delay`, in place of what it was to call before.
    void start(std::chrono::milliseconds delay, std::function<void()> action);
    /// When it returns, nothing will be called.
    void stop() { mTimer.reset(); }

private:
    EventLoop* mLoop;
    std::shared_ptr<void> mTimer;
};

/// Tries something again after a pause, when the system was short of what it takes, such as descriptors: nothing tells
/// when there is more.
class Retry {
public:
    static constexpr std::chrono::milliseconds kPause{100};

    explicit Retry(EventLoop& loop) : mTimer(loop) {}

    /// Calls `action` after the pause. Logs the problem, but not the same one twice, and none that is empty.
    void later(const std::string& problem, std::function<void()> action);
    /// It has worked: the log tells when the problem comes again.
    void succeeded() { mLogged.clear(); }
    /// When it returns, nothing will be called.
    void stop() { mTimer.stop(); }

private:
    Timer mTimer;
    std::string mLogged;
};

/// Does the one thing that makes a loop go on after a shortage, such as Retry::later(): while there is no memory even
/// for that, nothing else on the loop could be done either.
template <class Action>
void onceThereIsMemory(Action action) {
    for (;;) {
        try {
            action();
            return;
        } catch (const std::bad_alloc&) {
            std::this_thread::sleep_for(Retry::kPause);
        }
    }
}

}  // namespace qvn::host
