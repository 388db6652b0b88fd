#pragma once

#include <common_base/CBaseWorker.h>

/// The process's I/O thread: serves every client and server that was given no worker of its own.
///
/// The one instance lives until the process ends: it is never destructed, so that a callback that is running while
/// the process exits finds it whole.
class FDB_API CFdbContext : public CBaseWorker {
public:
    static CFdbContext* getInstance();

    /// Starting it twice is harmless.
    bool start(uint32_t flag = FDB_WORKER_ENABLE_FD_LOOP);
    /// Ends the thread and waits for it. False on the context's own thread. It may be started again.
    bool destroy();

private:
    CFdbContext();
};

#define FDB_CONTEXT CFdbContext::getInstance()
