#include "canservice/T21CanServiceFdbusClient.h"

#include <gpioport/gpioport_client.h>
#include <unistd.h>

#include <utility>

#include "log/Log.h"
#include "tables/SubscriptionCodes.h"

namespace {

constexpr int kGpioPort = 0;

}  // namespace

T21CanServiceFdbusClient::T21CanServiceFdbusClient(const char* name, CBaseWorker* worker) : CBaseClient(name, worker) {
    QVN_LOG(Error, "[%s][%d]T21CanServiceFdbusClient construct...");
    signalAdapter = std::make_shared<T21CanSignalAdapter>();
    gpioport_request(kGpioPort);
}

T21CanServiceFdbusClient::~T21CanServiceFdbusClient() {
    T21CanServiceFdbusClient::stop();
}

void T21CanServiceFdbusClient::stop() {
    // What is queued on the worker runs into the closed gate, so that a long queue is worked off at once.
    gate.close();
    endSending();
    if (!takenDown.exchange(true)) {
        gpioport_exit();
        prepareDestroy();
    }
}

bool T21CanServiceFdbusClient::endCallbacks(std::chrono::steady_clock::time_point deadline) {
    gate.close();
    return !gate.isInside() && gate.waitUntilEmpty(deadline);
}

void T21CanServiceFdbusClient::leaveBus(bool callbackRuns) {
    endSending();
    if (callbackRuns || threadLost) {
        disconnect();
    } else if (!takenDown.exchange(true)) {
        prepareDestroy();
    }
}

void T21CanServiceFdbusClient::endSending() {
    const qvn::sync::MutexLock lock(sendMutex);
    sendingEnded = true;
}

void T21CanServiceFdbusClient::setFuncSignalTable(const VehilceClientInfo* table) {
    signal_table_ = table;
}

void T21CanServiceFdbusClient::registerSignalCallback(SignalCallback callback) {
    const qvn::sync::MutexLock lock(callbackMutex);
    signalCallback = std::move(callback);
}

void T21CanServiceFdbusClient::registerAvailableSignalCallabck(AvailableSignalCallback callback) {
    const qvn::sync::MutexLock lock(callbackMutex);
    availableSignalCallback = std::move(callback);
}

SignalCallback T21CanServiceFdbusClient::currentSignalCallback() {
    const qvn::sync::MutexLock lock(callbackMutex);
    return signalCallback;
}

AvailableSignalCallback T21CanServiceFdbusClient::currentAvailableCallback() {
    const qvn::sync::MutexLock lock(callbackMutex);
    return availableSignalCallback;
}

void T21CanServiceFdbusClient::onOnline(FdbSessionId_t, bool) {
    QVN_LOG(Error, "[%s][%d]T21CanServiceFdbusClient onOnline...");
    online = true;

    // Subscriptions end with their session, so every connection asks for everything again.
    CFdbMsgSubscribeList list;
    for (const std::uint32_t code : qvn::tables::kSubscriptionCodes) {
        addNotifyItem(list, static_cast<FdbMsgCode_t>(code), nullptr);
    }
    subscribe(list, 0);
    QVN_LOG(Info, "[%s][%d]T21CanServiceFdbusClient online...");
    if (observer != nullptr) {
        onLibraryThread("the coming of the service", [this] { observer->serviceChanged(true); });
    }
}

void T21CanServiceFdbusClient::onOffline(FdbSessionId_t, bool isLast) {
    if (observer != nullptr && isLast) {
        onLibraryThread("the going of the service", [this] { observer->serviceChanged(false); });
    }
}

// Sets are not confirmed: whatever the service answers is of no interest.
void T21CanServiceFdbusClient::onReply(CBaseJob::Ptr&) {}

void T21CanServiceFdbusClient::onStatus(CBaseJob::Ptr&, int32_t, const char*) {}
