#pragma once

#include <common_base/CFdbBaseObject.h>

/// The client of one service.
class FDB_API CBaseClient : public CBaseEndpoint {
public:
    explicit CBaseClient(const char* name = nullptr, CBaseWorker* worker = nullptr);
    ~CBaseClient() override;

    /// Connects to `svc://NAME` (without an argument: to the service that the object is named after) and returns
    /// FDB_INVALID_ID at once, whatever comes of it: the connection is made whenever the service appears, and
    /// onOnline() tells. A log line at level 0 tells when that can never be: the URL names no service, the runtime
    /// directory cannot be used, or the context was not started.
    FdbSessionId_t connect(const char* url = nullptr);
    /// Ends the connection, and all attempts to connect. onOffline() follows on the worker.
    void disconnect(FdbSessionId_t session = FDB_INVALID_ID);
    bool connected() const;
};
