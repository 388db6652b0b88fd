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
        : CBaseClient("vehiclectl-tap", &tap.mWorker), mTap(tap), mCodes(std::move(codes)) {}
    ~Client() override { prepareDestroy(); }

protected:
    void onOnline(FdbSessionId_t, bool) override {
        mTap.push({0, TapEvent::Kind::ServiceUp, 0, {}});
        CFdbMsgSubscribeList list;
        for (const std::uint32_t code : mCodes) {
            addNotifyItem(list, static_cast<FdbMsgCode_t>(code));
        }
        subscribe(list);
    }

    void onOffline(FdbSessionId_t, bool) override { mTap.push({0, TapEvent::Kind::ServiceDown, 0, {}}); }

    void onBroadcast(CBaseJob::Ptr& job) override {
        const auto* const message = castToMessage<CFdbMessage*>(job);
        const auto code = static_cast<std::uint32_t>(message->code());
        can_service::BroadcastMessageStatus status;
        can_service::BroadcastSignal signal;
        if (tables::findMessage(code) == nullptr) {
            if (wire::read(*message, signal)) {
                mTap.push({0, TapEvent::Kind::Signal, code, signal.raw_value()});
            }
        } else if (wire::read(*message, status)) {
            const bool timedOut = status.msg_status() == wire::kMessageTimedOut;
            if (timedOut || status.msg_status() == wire::kMessageOk) {
                mTap.push({0, timedOut ? TapEvent::Kind::MessageTimedOut : TapEvent::Kind::MessageOk, code, {}});
            }
        }
    }

private:
    BusTap& mTap;
    const std::vector<std::uint32_t> mCodes;
};

BusTap::BusTap(std::vector<std::uint32_t> codes) : mWorker("bus-tap") {
    reverseLineMoved(this);
    gpioport_request(0);
    gpioport_irq_func_register(wire::kReverseLine, wire::kBothEdges, &reverseLineMoved, this);
    FDB_CONTEXT->start();
    mWorker.start();
    mClient = std::make_unique<Client>(*this, std::move(codes));
    mClient->enableReconnect(true);
    mClient->connect(wire::serviceAddress(wire::kServiceName).c_str());
}

BusTap::~BusTap() {
    gpioport_exit();
    mClient.reset();
    mWorker.exit();
    mWorker.join();
}

std::vector<TapEvent> BusTap::take() {
    std::vector<TapEvent> events;
    const sync::MutexLock lock(mMutex);
    mWakeUp.clear();
    events.swap(mEvents);
    return events;
}

void BusTap::reverseLineMoved(void* tap) {
    const bool engaged = gpioport_get_inout_value(wire::kReverseLine) == wire::kReverseEngaged;
    static_cast<BusTap*>(tap)->push(
        {0, engaged ? TapEvent::Kind::ReverseEngaged : TapEvent::Kind::ReverseReleased, 0, {}});
}

void BusTap::push(TapEvent event) {
    const sync::MutexLock lock(mMutex);
    event.at = monotonicNow();
    mEvents.push_back(std::move(event));
    if (mEvents.size() == 1) {
        mWakeUp.notify();
    }
}

}  // namespace qvn::tools
