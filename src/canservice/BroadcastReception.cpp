#include <utility>

#include "callback/CallApplication.h"
#include "canservice/T21CanServiceFdbusClient.h"
#include "ipc_common_soc/CanServiceWire.h"
#include "log/Log.h"

using namespace qvn::platform::vehicle;

namespace {

/// A signal has 8 bytes at most; what a broadcast of more than this has taken is not kept for the next.
constexpr int kKeptBytes = 1024;

}  // namespace

void T21CanServiceFdbusClient::onBroadcast(CBaseJob::Ptr& job) {
    onLibraryThread("a broadcast", [&] {
        if (const auto* const message = castToMessage<CFdbMessage*>(job)) {
            onBroadcast(*message);
            if (message->getPayloadSize() > kKeptBytes) {
                can_service::BroadcastSignal().Swap(&broadcastSignal);
            }
        }
    });
}

void T21CanServiceFdbusClient::onBroadcast(const CFdbMessage& message) {
    QVN_LOG(Info, "[%s][%d]onBroadcast msg_code:%d.", message.code());

    // A message status parses as a signal, too: its field is an unknown one there.
    if (!qvn::wire::read(message, broadcastSignal)) {
        return;
    }
    const qvn::tables::MessageRow* const row = qvn::tables::findMessage(static_cast<std::uint32_t>(message.code()));
    if (row == nullptr) {
        VehicleClientProperty property;
        if (!signalAdapter->signalAdapter(message.code(), broadcastSignal.raw_value(), signal_table_, property)) {
            return;
        }
        if (const SignalCallback callback = currentSignalCallback()) {
            qvn::callback::callApplication([&] { callback(std::move(property.propValue), property.propertyType); });
        }
        return;
    }

    can_service::BroadcastMessageStatus messageStatus;
    if (!qvn::wire::read(message, messageStatus)) {
        return;
    }
    QVN_LOG(Info, "[%s][%d]msg_status:%d", static_cast<int>(messageStatus.msg_status()));
    if (messageStatus.msg_status() == qvn::wire::kMessageTimedOut) {
        feedbackSignalStatus(message.code(), VEHICLE_PROPERTY_STATUS_TIMEOUT, row);
        QVN_LOG(Error, "[%s][%d]can service dispatchs signals timeout!");
        tellStatus(*row, VEHICLE_PROPERTY_STATUS_TIMEOUT);
    } else if (messageStatus.msg_status() == qvn::wire::kMessageOk) {
        feedbackSignalStatus(message.code(), VEHICLE_PROPERTY_STATUS_AVAILABLE, row);
        QVN_LOG(Info, "[%s][%d]can service dispatchs signals becomes ok!");
        tellStatus(*row, VEHICLE_PROPERTY_STATUS_AVAILABLE);
    }
}
