#include <common_base/CBaseClient.h>

#include "ClientLink.h"
#include "ServiceAddress.h"

namespace {

fdb::ClientLink& link(const std::shared_ptr<fdb::Endpoint>& endpoint) {
    return static_cast<fdb::ClientLink&>(*endpoint);
}

}  // namespace

CBaseClient::CBaseClient(const char* name, CBaseWorker* worker) : CBaseEndpoint(name, worker) {
    mEndpoint = std::make_shared<fdb::ClientLink>(fdb::loopOf(worker), this);
}

CBaseClient::~CBaseClient() {
    fdb::Endpoint::retire(std::move(mEndpoint));
}

FdbSessionId_t CBaseClient::connect(const char* url) {
    const std::string service = fdb::serviceName(url, name());
    if (!service.empty() && fdb::contextRunsFor(service)) {
        link(mEndpoint).connect(service);
    }
    return FDB_INVALID_ID;
}

void CBaseClient::disconnect(FdbSessionId_t /*session*/) {
    link(mEndpoint).disconnect();
}

bool CBaseClient::connected() const {
    return link(mEndpoint).connected();
}
