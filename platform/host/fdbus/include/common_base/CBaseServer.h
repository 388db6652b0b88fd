#pragma once

#include <common_base/CFdbBaseObject.h>

/// The server of one service.
class FDB_API CBaseServer : public CBaseEndpoint {
public:
    explicit CBaseServer(const char* name = nullptr, CBaseWorker* worker = nullptr);
    ~CBaseServer() override;

    /// Offers `svc://NAME` (without an argument: the name of the object). The result is FDB_INVALID_ID whatever comes
    /// of it. A log line at level 0 tells when the service is not offered: the URL names no service, another server
    /// has the name, the runtime directory cannot be used, or the context was not started.
    FdbSocketId_t bind(const char* url = nullptr);
    /// Withdraws the service; every session ends.
    void unbind();
};
