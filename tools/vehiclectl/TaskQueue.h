#pragma once

#include <functional>
#include <list>

#include "desk/WakeUp.h"
#include "sync/Mutex.h"

namespace qvn::tools {

/// Brings tasks of other threads to one that waits for file descriptors.
class TaskQueue {
public:
    using Task = std::function<void()>;

    /// Adds a task; from any thread.
    void add(const Task& task);

    /// Readable while tasks wait.
    int fd() const { return mWakeUp.fd(); }

    /// Runs the tasks that wait, but none that is added meanwhile.
    void run();

private:
    sync::Mutex mMutex;
    std::list<Task> mTasks QVN_GUARDED_BY(mMutex);
    WakeUp mWakeUp;
};

}  // namespace qvn::tools
