#pragma once

#include <common_base/CBaseWorker.h>

/// The process's I/O thread: serves every client and server that was given no worker of its own. Start it before any
/// client connects and any server binds, and end it when the last of them is gone.
///
/// The one instance lives until the process ends: it is never destructed, so that a callback that is running while
/// the process exits finds it whole.
class FDB_API CFdbContext : public CBaseWorker {
public:
    static CFdbContext* getInstance();

    /// As CBaseWorker::start(); starting it twice is harmless.
    bool start(uint32_t flag = FDB_WORKER_ENABLE_FD_LOOP);
    /// Ends the thread for good and waits for it. False on the context's own thread.
    bool destroy();

private:
    CFdbContext();
};

#define FDB_CONTEXT CFdbContext::getInstance()
