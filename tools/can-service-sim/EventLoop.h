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

    explicit EventLoop(const StopSignals& stop) : mStop(stop) {}

    /// Runs the task at this time; tasks of the same time run in the order of the calls. What is late by far has to
    /// take its turn, or a trace that is too fast for the machine would keep everything else from being done. The timer
    /// is valid until the task runs.
    Timer at(Clock::time_point time, Task task) {
        return mTimed.emplace(std::max(time, Clock::now() - kMostLate), std::move(task));
    }
    void cancel(Timer timer) { mTimed.erase(timer); }

    /// Runs the task as soon as the loop gets to it. Once the loop has ended, tasks are destroyed instead.
    void post(Task task);

    /// Calls `readable` whenever the file descriptor has something to read, until unwatch().
    void watch(int fd, Task readable);
    void unwatch(int fd) { mInputs.erase(fd); }

    /// Runs until end() or a signal.
    void run();
    void end() { mEnded = true; }

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

    const StopSignals& mStop;
    WakeUp mWakeUp;
    std::multimap<Clock::time_point, Task> mTimed;
    sync::Mutex mMutex;
    std::vector<Task> mPosted QVN_GUARDED_BY(mMutex);
    bool mTakesPosts QVN_GUARDED_BY(mMutex) = true;
    std::map<int, Task> mInputs;
    bool mEnded = false;
};

}  // namespace qvn::tools
