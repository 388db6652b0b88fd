#pragma once

#include <common_base/fdb_types.h>

/// Start a thread of its own that runs the loop.
#define FDB_WORKER_DEFAULT 0
/// Run the loop on the calling thread: start() returns when exit() was called.
#define FDB_WORKER_EXE_IN_PLACE (1 << 0)
/// The loop may watch file descriptors. Every worker of this host can; the flag is accepted.
#define FDB_WORKER_ENABLE_FD_LOOP (1 << 1)

/// What every thread of the bus offers.
class FDB_API CBaseThread {
public:
    virtual ~CBaseThread();
    /// True on the thread that this object runs.
    virtual bool isSelf() const = 0;
    /// Waits for the thread's end: at most `ms` milliseconds, 0 without limit. False when it is still running.
    virtual bool join(uint32_t ms = 0) = 0;
};
