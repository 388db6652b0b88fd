#pragma once

#include <common_base/CBaseJob.h>
#include <common_base/CBaseThread.h>

#include <atomic>
#include <memory>
#include <string>

namespace qvn {
namespace host {
class EventLoop;
}
}  // namespace qvn

/// An event loop with a thread: runs jobs in the order in which they were sent, and serves the sockets of the clients
/// and servers that were given this worker.
///
/// All members may be called from any thread. Clients and servers may outlive their worker; they then get no callbacks.
class FDB_API CBaseWorker : public CBaseThread {
public:
    /// @param thread_name names the thread to the system, which shows its first 15 characters
    /// @param normal_queue_size most jobs that may wait; 0 is unlimited
    /// @param urgent_queue_size accepted for the interface; there is one queue
    explicit CBaseWorker(const char* thread_name = "", uint32_t normal_queue_size = 0, uint32_t urgent_queue_size = 0);
    /// Call exit() and join() first. A thread that still runs is reported at level 0, ended and waited for.
    ~CBaseWorker() override;
    CBaseWorker(const CBaseWorker&) = delete;
    CBaseWorker& operator=(const CBaseWorker&) = delete;

    /// Starts the loop (flags: FDB_WORKER_...), once: false when it was started before, even if it has ended since.
    /// False also, with a log line at level 0, when the system has no thread to give.
    bool start(uint32_t flag = FDB_WORKER_DEFAULT);
    /// Asks the loop to end after the jobs that were sent before.
    void exit(int32_t code = 1);
    bool join(uint32_t ms = 0) override;
    bool isSelf() const override;

    /// Queues a job; the raw form takes ownership. False when the loop is not running or the queue is full.
    bool sendAsync(CBaseJob* job);
    bool sendAsync(CBaseJob::Ptr& job);
    /// Queues a job and waits until it has run: at most `ms` milliseconds, 0 without limit. False when the loop is not
    /// running, the queue is full or the time is over, and on the worker's own thread, which cannot wait for itself.
    bool sendSync(CBaseJob* job, int32_t ms = 0);
    bool sendSync(CBaseJob::Ptr& job, int32_t ms = 0);
    /// Waits until every job that was sent before has run; as sendSync().
    bool flush(int32_t ms = 0);

    const std::string& name() const { return mName; }
    const std::shared_ptr<qvn::host::EventLoop>& loop() const { return mLoop; }

private:
    std::string mName;
    uint32_t mQueueSize;
    std::shared_ptr<std::atomic<uint32_t>> mQueued;
    std::shared_ptr<qvn::host::EventLoop> mLoop;
};
