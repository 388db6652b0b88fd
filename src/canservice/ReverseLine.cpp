#include <gpioport/gpioport_client.h>

#include <utility>

#include "callback/CallApplication.h"
#include "canservice/T21CanServiceFdbusClient.h"
#include "ipc_common_soc/ReverseLine.h"
#include "log/Log.h"
#include "sync/MonotonicTime.h"

using namespace qvn::platform::vehicle;
using namespace qvn::wire;

namespace {

constexpr int kOpenViews = 1;
constexpr int kCloseViews = 0;

constexpr int kPowerModeOn = 2;

void inject(const SignalCallback& callback, std::int32_t property, int number) {
    if (!callback) {
        return;
    }
    VehiclePropValue value;
    value.prop = property;
    value.value.int32Values.push_back(number);
    qvn::callback::callApplication([&] { callback(std::move(value), PROPERTY_TYPE_INT32); });
}

}  // namespace

void T21CanServiceFdbusClient::sendPasworkCmd(int cmd) {
    inject(currentSignalCallback(), kParkingWorkCommand, cmd);
    inject(currentSignalCallback(), kSystemPowerMode, kPowerModeOn);
}

void T21CanServiceFdbusClient::registerErrSignalCallback(SetErrorCallback callback, std::uint64_t subscription) {
    lineSubscribed = true;
    {
        const qvn::sync::MutexLock lock(callbackMutex);
        if (subscription >= subscriptionNumber) {
            subscriptionNumber = subscription;
            errorCallback = callback;
        }
    }
    const CallbackGate::Passage passage(gate);
    if (!passage) {
        return;
    }

    // Reverse may have been selected before anybody listened, so the level counts now, even with the service online.
    const int level = gpioport_get_inout_value(kReverseLine);
    if (level == kReverseEngaged) {
        sendPasworkCmd(kOpenViews);
        QVN_LOG(Info, "[%s][%d]T22CanServiceFdbusClient gpio low level interrupt to open AVM/RVC/HAP!");
    } else if (level == kReverseReleased) {
        sendPasworkCmd(kCloseViews);
        QVN_LOG(Info, "[%s][%d]T22CanServiceFdbusClient gpio high level interrupt to close AVM/RVC/HAP!");
    }
    watchReverseLine();
    // An edge since the level was read has caused no interrupt; every later one does.
    if (gpioport_get_inout_value(kReverseLine) != level) {
        gpioIsrCallback(this);
    }
}

void T21CanServiceFdbusClient::watchReverseLine() {
    if (gate.isClosed()) {
        return;
    }
    if (gpioport_irq_func_register(kReverseLine, kBothEdges, &T21CanServiceFdbusClient::onInterrupt, this) != 0) {
        QVN_LOG(Error, "[%s][%d]cannot watch the reverse line, GPIO %d; the next subscribe tries again!", kReverseLine);
    }
    if (gate.isClosed()) {
        gpioport_exit();  // stop() came in between
    }
}

void T21CanServiceFdbusClient::observeReverseLine() {
    const CallbackGate::Passage passage(gate);
    if (!passage || online) {
        return;
    }
    if (!lineSubscribed) {
        watchReverseLine();
    }
    tellReverseLine();
}

void T21CanServiceFdbusClient::tellReverseLine() {
    const long time = qvn::sync::monotonicTime();
    const int level = online ? -1 : gpioport_get_inout_value(kReverseLine);
    if (observer != nullptr && (level == kReverseEngaged || level == kReverseReleased)) {
        observer->reverseLineRead(kParkingWorkCommand, level == kReverseEngaged ? kOpenViews : kCloseViews, time);
        observer->reverseLineRead(kSystemPowerMode, kPowerModeOn, time);
    }
}

void T21CanServiceFdbusClient::onInterrupt(void* context) {
    auto* const client = static_cast<T21CanServiceFdbusClient*>(context);
    client->onLibraryThread("an edge of the reverse line",
                            [client] { client->lineSubscribed ? gpioIsrCallback(client) : client->tellReverseLine(); });
}

// The texts name neither this class nor always the level that was read; log analysis knows them this way.
void T21CanServiceFdbusClient::gpioIsrCallback(void* context) {
    auto* const client = static_cast<T21CanServiceFdbusClient*>(context);
    if (client->online) {
        QVN_LOG(Info, "[%s][%d]T22CanServiceFdbusClient online, gpioIsrCallback return!");
        return;
    }
    if (!client->currentSignalCallback()) {
        return;
    }
    const int level = gpioport_get_inout_value(kReverseLine);
    if (level == kReverseEngaged) {
        client->sendPasworkCmd(kOpenViews);
        QVN_LOG(Info, "[%s][%d]T22CanServiceFdbusClient gpio high level interrupt to open AVM/RVC/HAP!");
    } else if (level == kReverseReleased) {
        client->sendPasworkCmd(kCloseViews);
        QVN_LOG(Info, "[%s][%d]T22CanServiceFdbusClient gpio high level interrupt to close AVM/RVC/HAP!");
    }
}
