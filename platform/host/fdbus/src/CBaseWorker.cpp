#include <common_base/CBaseWorker.h>
#include <common_base/CFdbContext.h>

#include <host/EventLoop.h>
#include <host/Log.h>

#include <exception>
#include <system_error>

using qvn::host::EventLoop;
using qvn::host::kLogError;
using qvn::host::kLogFatal;

namespace {

void runGuarded(CBaseJob& job, CBaseWorker* worker, CBaseJob::Ptr& ref) {
    try {
        job.run(worker, ref);
    } catch (const std::exception& error) {
        lgklog_print(kLogError, "fdbus: a job of worker '%s' threw: %s", worker->name().c_str(), error.what());
    } catch (...) {
        lgklog_print(kLogError, "fdbus: a job of worker '%s' threw", worker->name().c_str());
    }
}

/// Tells its sender, who waits for the loop's signal, when it has run.
class SyncJob : public CBaseJob {
public:
    SyncJob(CBaseJob::Ptr job, std::shared_ptr<std::atomic<bool>> done)
        : mJob(std::move(job)), mDone(std::move(done)) {}

    void run(CBaseWorker* worker, Ptr& /*ref*/) override {
        runGuarded(*mJob, worker, mJob);
        *mDone = true;
        worker->loop()->signal();
    }

private:
    CBaseJob::Ptr mJob;
    std::shared_ptr<std::atomic<bool>> mDone;
};

}  // namespace

CBaseWorker::CBaseWorker(const char* thread_name, uint32_t normal_queue_size, uint32_t /*urgent_queue_size*/)
    : mName(thread_name ? thread_name : ""),
      mQueueSize(normal_queue_size),
      mQueued(std::make_shared<std::atomic<uint32_t>>(0)),
      mLoop(std::make_shared<EventLoop>()) {}

CBaseWorker::~CBaseWorker() {
    if (mLoop->isForeign()) {
        EventLoop::abandon(mLoop);
        return;
    }
    if (mLoop->running()) {
        lgklog_print(kLogFatal, "fdbus: worker '%s' is destroyed while its thread runs; call exit() and join() before",
                     mName.c_str());
        mLoop->stop();
        mLoop->join(0);
    }
}

bool CBaseWorker::start(uint32_t flag) {
    try {
        return mLoop->start(mName.empty() ? "fdb_worker" : mName, (flag & FDB_WORKER_EXE_IN_PLACE) != 0);
    } catch (const std::system_error& error) {
        lgklog_print(kLogFatal, "fdbus: cannot start the thread of worker '%s': %s", mName.c_str(), error.what());
        return false;
    }
}

void CBaseWorker::exit(int32_t /*code*/) {
    if (mLoop->running()) {
        mLoop->post([loop = mLoop.get()] { loop->stop(); });
    }
}

bool CBaseWorker::join(uint32_t ms) {
    return mLoop->join(ms);
}

bool CBaseWorker::isSelf() const {
    return mLoop->isSelf();
}

bool CBaseWorker::sendAsync(CBaseJob* job) {
    CBaseJob::Ptr owned(job);
    return sendAsync(owned);
}

bool CBaseWorker::sendAsync(CBaseJob::Ptr& job) {
    if (!job || !mLoop->running() || (mQueueSize != 0 && mQueued->load() >= mQueueSize)) {
        return false;
    }
    ++*mQueued;
    mLoop->post([this, job, queued = mQueued]() mutable {
        --*queued;
        runGuarded(*job, this, job);
    });
    return true;
}

bool CBaseWorker::sendSync(CBaseJob* job, int32_t ms) {
    CBaseJob::Ptr owned(job);
    return sendSync(owned, ms);
}

bool CBaseWorker::sendSync(CBaseJob::Ptr& job, int32_t ms) {
    if (!job || isSelf()) {
        return false;
    }
    const auto done = std::make_shared<std::atomic<bool>>(false);
    CBaseJob::Ptr wrapped = std::make_shared<SyncJob>(job, done);
    return sendAsync(wrapped) && mLoop->waitForSignal(*done, ms);
}

bool CBaseWorker::flush(int32_t ms) {
    return sendSync(new CBaseJob, ms);
}

CFdbContext::CFdbContext() : CBaseWorker("fdb_context") {}

CFdbContext* CFdbContext::getInstance() {
    static CFdbContext* const instance = new CFdbContext;
    return instance;
}

bool CFdbContext::start(uint32_t flag) {
    return CBaseWorker::start(flag);
}

bool CFdbContext::destroy() {
    exit();
    return join();
}
