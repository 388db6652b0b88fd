#include "vehiclectl/TaskQueue.h"

namespace qvn::tools {

void TaskQueue::add(const Task& task) {
    const sync::MutexLock lock(mutex_);
    tasks_.push_back(task);
    wakeUp_.notify();
}

void TaskQueue::run() {
    std::list<Task> tasks;
    {
        const sync::MutexLock lock(mutex_);
        wakeUp_.clear();
        tasks.swap(tasks_);
    }
    for (const Task& task : tasks) {
        task();
    }
}

}  // namespace qvn::tools
