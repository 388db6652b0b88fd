#include "vehiclectl/TaskQueue.h"

namespace qvn::tools {

void TaskQueue::add(const Task& task) {
    const sync::MutexLock lock(mMutex);
    mTasks.push_back(task);
    mWakeUp.notify();
}

void TaskQueue::run() {
    std::list<Task> tasks;
    {
        const sync::MutexLock lock(mMutex);
        mWakeUp.clear();
        tasks.swap(mTasks);
    }
    for (const Task& task : tasks) {
        task();
    }
}

}  // namespace qvn::tools
