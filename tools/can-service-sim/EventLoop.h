#pragma once

#include <algorithm>
#include <chrono>
#include <functional>
#include <map>
#include <utility>
#include <vector>

#include "desk/PollUntil.h"
#include "desk/StopSignals.h"
#include "desk/WakeUp.h"
#include "sync/Mutex.h"

namespace qvn::tools {

/// The main thread's loop: runs tasks at their time, reads from file descriptors as input comes, and ends at SIGINT or
/// SIGTERM. Only post() may be called from another thread.
class EventLoop {
public:
    using Task = std::function<void()>;
    using Timer = std::multimap<Clock::time_point, Task>::iterator;

    explicit EventLoop(const StopSignals& stop) : stop_(stop) {}

    /// Runs the task at this time; tasks of the same time run in the order of the calls. What is late by far has to
    /// take its turn, or a trace that is too fast for the machine would keep everything else from being done. The timer
    /// is valid until the task runs.
    Timer at(Clock::time_point time, Task task) {
        return timed_.emplace(std::max(time, Clock::now() - kMostLate), std::move(task));
    }
    void cancel(Timer timer) { timed_.erase(timer); }

    /// Runs the task as soon as the loop gets to it. Once the loop has ended, tasks are destroyed instead.
    void post(Task task);

    /// Calls `readable` whenever the file descriptor has something to read, until unwatch().
    void watch(int fd, Task readable);
    void unwatch(int fd) { inputs_.erase(fd); }

    /// Runs until end() or a signal.
    void run();
    void end() { ended_ = true; }

private:
    static constexpr std::chrono::milliseconds kMostLate{50};

    struct Closing {
        ~Closing();
        EventLoop& loop;
    };

    void wait();
    void runPosted();
    std::vector<Task> takePosted();
    void runDue();

    const StopSignals& stop_;
    WakeUp wakeUp_;
    std::multimap<Clock::time_point, Task> timed_;
    sync::Mutex mutex_;
    std::vector<Task> posted_ QVN_GUARDED_BY(mutex_);
    bool takesPosts_ QVN_GUARDED_BY(mutex_) = true;
    std::map<int, Task> inputs_;
    bool ended_ = false;
};

}  // namespace qvn::tools
