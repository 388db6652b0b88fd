#pragma once

#include <common_base/fdb_types.h>

#include <memory>

class CBaseWorker;

/// A piece of work that a CBaseWorker runs on its thread.
class FDB_API CBaseJob {
public:
    typedef std::shared_ptr<CBaseJob> Ptr;

    CBaseJob() {}
    virtual ~CBaseJob();
    CBaseJob(const CBaseJob&) = delete;
    CBaseJob& operator=(const CBaseJob&) = delete;

    /// Called once on the worker's thread. `ref` is the job itself; a copy of it keeps the job alive.
    virtual void run(CBaseWorker* worker, Ptr& ref);
};
