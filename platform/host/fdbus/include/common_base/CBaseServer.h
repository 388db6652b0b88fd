#pragma once

#include <common_base/CFdbBaseObject.h>

/// The server of one service.
class FDB_API CBaseServer : public CBaseEndpoint {
public:
    explicit CBaseServer(const char* name = nullptr, CBaseWorker* worker = nullptr);
    ~CBaseServer() override;

    /// Offers `svc://NAME` (without an argument: the name of the object). FDB_INVALID_ID when the URL is none, another
    /// server has the name, or the runtime directory cannot be used; a log line says why.
    FdbSocketId_t bind(const char* url = nullptr);
    /// Withdraws the service; every session ends.
    void unbind();
};
