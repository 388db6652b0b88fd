#pragma once

#include <common_base/CFdbBaseObject.h>

/// The client of one service.
class FDB_API CBaseClient : public CBaseEndpoint {
public:
    explicit CBaseClient(const char* name = nullptr, CBaseWorker* worker = nullptr);
    ~CBaseClient() override;

    /// Connects to `svc://NAME` (without an argument: to the service that the object is named after) and returns at
    /// once; the connection is made whenever the service appears. FDB_INVALID_ID when the URL is none, or the runtime
    /// directory cannot be used; a log line says why.
    FdbSessionId_t connect(const char* url = nullptr);
    /// Ends the connection, and all attempts to connect. onOffline() follows on the worker.
    void disconnect(FdbSessionId_t session = FDB_INVALID_ID);
    bool connected() const;
};
