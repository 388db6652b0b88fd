#include <common_base/CBaseServer.h>

#include "ServerHub.h"
#include "ServiceAddress.h"

namespace {

fdb::ServerHub& hub(const std::shared_ptr<fdb::Endpoint>& endpoint) {
    return static_cast<fdb::ServerHub&>(*endpoint);
}

}  // namespace

CBaseServer::CBaseServer(const char* name, CBaseWorker* worker) : CBaseEndpoint(name, worker) {
    mEndpoint = std::make_shared<fdb::ServerHub>(fdb::loopOf(worker), this);
}

CBaseServer::~CBaseServer() {
    fdb::Endpoint::retire(std::move(mEndpoint));
}

FdbSocketId_t CBaseServer::bind(const char* url) {
    const std::string service = fdb::serviceName(url, name());
    if (!service.empty() && fdb::contextRunsFor(service)) {
        hub(mEndpoint).bind(service);
    }
    return FDB_INVALID_ID;
}

void CBaseServer::unbind() {
    hub(mEndpoint).unbind();
}
