#include "vehiclectl/BusTap.h"

#include <gpioport/gpioport_client.h>

#include <utility>

#include "desk/MonotonicTime.h"
#include "ipc_common_soc/CanServiceWire.h"
#include "ipc_common_soc/ReverseLine.h"
#include "ipc_common_soc/ServiceName.h"
#include "tables/MessageCatalogue.h"

namespace qvn::tools {

class BusTap::Client : public CBaseClient {
public:
    Client(BusTap& tap, std::vector<std::uint32_t> codes)
        : CBaseClient("vehiclectl-tap", &tap.worker_), tap_(tap), codes_(std::move(codes)) {}
    ~Client() override { prepareDestroy(); }

protected:
    void onOnline(FdbSessionId_t, bool) override {
        tap_.push({0, TapEvent::Kind::ServiceUp, 0, {}});
        CFdbMsgSubscribeList list;
        for (const std::uint32_t code : codes_) {
            addNotifyItem(list, static_cast<FdbMsgCode_t>(code));
        }
        subscribe(list);
    }

    void onOffline(FdbSessionId_t, bool) override { tap_.push({0, TapEvent::Kind::ServiceDown, 0, {}}); }

    void onBroadcast(CBaseJob::Ptr& job) override {
        const auto* const message = castToMessage<CFdbMessage*>(job);
        const auto code = static_cast<std::uint32_t>(message->code());
        can_service::BroadcastMessageStatus status;
        can_service::BroadcastSignal signal;
        if (tables::findMessage(code) == nullptr) {
            if (wire::read(*message, signal)) {
                tap_.push({0, TapEvent::Kind::Signal, code, signal.raw_value()});
            }
        } else if (wire::read(*message, status)) {
            const bool timedOut = status.msg_status() == wire::kMessageTimedOut;
            if (timedOut || status.msg_status() == wire::kMessageOk) {
                tap_.push({0, timedOut ? TapEvent::Kind::MessageTimedOut : TapEvent::Kind::MessageOk, code, {}});
            }
        }
    }

private:
    BusTap& tap_;
    const std::vector<std::uint32_t> codes_;
};

BusTap::BusTap(std::vector<std::uint32_t> codes) : worker_("bus-tap") {
    reverseLineMoved(this);
    gpioport_request(0);
    gpioport_irq_func_register(wire::kReverseLine, wire::kBothEdges, &reverseLineMoved, this);
    FDB_CONTEXT->start();
    worker_.start();
    client_ = std::make_unique<Client>(*this, std::move(codes));
    client_->enableReconnect(true);
    client_->connect(wire::serviceAddress(wire::kServiceName).c_str());
}

BusTap::~BusTap() {
    gpioport_exit();
    client_.reset();
    worker_.exit();
    worker_.join();
}

std::vector<TapEvent> BusTap::take() {
    std::vector<TapEvent> events;
    const sync::MutexLock lock(mutex_);
    wakeUp_.clear();
    events.swap(events_);
    return events;
}

void BusTap::reverseLineMoved(void* tap) {
    const bool engaged = gpioport_get_inout_value(wire::kReverseLine) == wire::kReverseEngaged;
    static_cast<BusTap*>(tap)->push(
        {0, engaged ? TapEvent::Kind::ReverseEngaged : TapEvent::Kind::ReverseReleased, 0, {}});
}

void BusTap::push(TapEvent event) {
    const sync::MutexLock lock(mutex_);
    event.at = monotonicNow();
    events_.push_back(std::move(event));
    if (events_.size() == 1) {
        wakeUp_.notify();
    }
}

}  // namespace qvn::tools
