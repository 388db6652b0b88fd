#include "vehiclectl/ServiceLink.h"

#include <atomic>
#include <map>
#include <string>
#include <utility>

#include "desk/MonotonicTime.h"
#include "ipc_common_soc/CanServiceWire.h"
#include "ipc_common_soc/ReverseLine.h"
#include "ipc_common_soc/ServiceName.h"
#include "vehiclectl/PropertyFeed.h"

namespace qvn::tools {
namespace {

using platform::vehicle::VehiclePropValue;

using PropertyOfCode = std::map<std::uint32_t, int>;

PropertyOfCode codesToRead(const std::vector<const PropertyInfo*>& properties) {
    PropertyOfCode result;
    for (const PropertyInfo* const property : properties) {
        if (property->id == wire::kParkingWorkCommand || property->id == wire::kSystemPowerMode) {
            for (const std::uint32_t code : property->received) {
                result[code] = static_cast<int>(property->id);
            }
        }
    }
    return result;
}

Update valueOf(int property, const std::string& raw) {
    VehiclePropValue value;
    value.timestamp = monotonicNow();
    value.prop = property;
    value.value.int32Values.push_back(raw.empty() ? 0 : static_cast<unsigned char>(raw.front()));
    return {Update::Kind::Value, Update::Origin::Link, property, std::move(value)};
}

}  // namespace

class ServiceLink::Client : public CBaseClient {
public:
    Client(CBaseWorker* worker, PropertyOfCode codes) : CBaseClient("vehiclectl", worker), codes_(std::move(codes)) {}
    ~Client() override { prepareDestroy(); }

    bool online() const { return online_; }

protected:
    void onOnline(FdbSessionId_t, bool) override {
        CFdbMsgSubscribeList list;
        for (const auto& entry : codes_) {
            addNotifyItem(list, static_cast<FdbMsgCode_t>(entry.first));
        }
        if (!codes_.empty()) {
            subscribe(list);
        }
        setOnline(true);
    }

    void onOffline(FdbSessionId_t, bool) override { setOnline(false); }

    void onBroadcast(CBaseJob::Ptr& job) override {
        const auto* const message = castToMessage<CFdbMessage*>(job);
        const auto property = codes_.find(static_cast<std::uint32_t>(message->code()));
        can_service::BroadcastSignal signal;
        if (property != codes_.end() && wire::read(*message, signal)) {
            PropertyFeed::instance().push(valueOf(property->second, signal.raw_value()));
        }
    }

private:
    void setOnline(bool online) {
        online_ = online;
        PropertyFeed::instance().push({Update::Kind::Service, Update::Origin::Link, 0, {}, online});
    }

    const PropertyOfCode codes_;
    std::atomic<bool> online_{false};
};

ServiceLink::ServiceLink(const std::vector<const PropertyInfo*>& properties) : worker_("service-link") {
    FDB_CONTEXT->start();
    worker_.start();
    client_ = std::make_unique<Client>(&worker_, codesToRead(properties));
    client_->enableReconnect(true);
    client_->connect((std::string("svc://") + wire::kServiceName).c_str());
}

ServiceLink::~ServiceLink() {
    client_.reset();
    worker_.exit();
    worker_.join();
}

bool ServiceLink::online() const {
    return client_->online();
}

}  // namespace qvn::tools
