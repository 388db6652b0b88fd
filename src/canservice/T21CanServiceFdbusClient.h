#ifndef CANSERVICE_T21_CAN_SERVICE_FDBUS_CLIENT_H
#define CANSERVICE_T21_CAN_SERVICE_FDBUS_CLIENT_H

#include <common_base/fdbus.h>
#include <vehicle/VehicleProperty.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>

#include "adapter/T21CanSignalAdapter.h"
#include "canservice/CallbackGate.h"
#include "canservice/ServiceObserver.h"
#include "common.base.canservice.pb.h"
#include "sync/Mutex.h"
#include "tables/MessageCatalogue.h"

using SignalCallback =
    std::function<void(qvn::platform::vehicle::VehiclePropValue, qvn::platform::vehicle::PropertyType)>;
using AvailableSignalCallback = std::function<void(qvn::platform::vehicle::VehicleProperty)>;

/// The FDBus client of the CAN service. Bus callbacks run on the worker it was given; everything else may be called
/// from any thread. Callbacks into the core run without a lock of this class held; what the application throws there is
/// logged and goes no further.
class T21CanServiceFdbusClient : public CBaseClient {
public:
    T21CanServiceFdbusClient(const char* name, CBaseWorker* worker);
    /// No callback runs any more when it returns. Must not run on the worker.
    ~T21CanServiceFdbusClient() override;

    void setFuncSignalTable(const VehilceClientInfo* table);
    void registerSignalCallback(SignalCallback callback);
    void registerAvailableSignalCallabck(AvailableSignalCallback callback);
    /// To be set before connect(); it must outlive the client.
    void setObserver(ServiceObserver* newObserver) { observer = newObserver; }
    /// Stores the application's status callback, acts on the reverse line's present level and starts watching it.
    /// A callback is not stored when one with a higher number is there: of two subscriptions at once the later one
    /// counts.
    void registerErrSignalCallback(qvn::platform::vehicle::SetErrorCallback callback, std::uint64_t subscription = 0);

    /// For the observer where nobody may have subscribed: watches the reverse line and tells its present level, unless
    /// the service was reached already. No value is injected.
    void observeReverseLine();

    /// Sends one set request for each enabled table row of the property, in table order, on the caller's thread.
    /// Returns the outcome of the last one: false if that row's signal cannot be set, or if there was no row.
    /// False, too, once stop() or leaveBus() was called. T is int, long, float or unsigned char.
    template <class T>
    bool signalFeedback(qvn::platform::vehicle::VehicleProperty property, T value);

    /// Reports the state of a whole CAN message for every property that one of its signals feeds.
    void feedbackSignalStatus(int code_id, qvn::platform::vehicle::VehiclePropertyStatus status);

    /// Injects the parking work command (1 opens the views, 0 closes them) and power mode "on" as if they had come from
    /// CAN.
    void sendPasworkCmd(int cmd);

    /// Ends the traffic for good: no callback runs any more when it returns. A further call does nothing. Must not run
    /// inside a callback.
    void stop();

    // The same in two steps, for a process that ends and must not wait without limit.

    /// Lets no further callback of the bus or the reverse line through to the core, and waits until none runs any more.
    /// False when the time is over before, and at once when the calling thread is inside one.
    bool endCallbacks(std::chrono::steady_clock::time_point deadline);
    /// Ends the session and sends nothing any more. While a callback runs it does not wait for the worker.
    void leaveBus(bool callbackRuns);
    /// Whether the calling thread is inside a callback.
    bool isInsideCallback() { return gate.isInside(); }
    /// Whether a callback has ended its thread, with pthread_exit or a cancellation. Nothing can wait for that thread
    /// any more: stop() must not be called, and the client not be destroyed.
    bool hasLostThread() const { return threadLost; }

protected:
    void onOnline(FdbSessionId_t session, bool isFirst) override;
    void onOffline(FdbSessionId_t session, bool isLast) override;
    void onBroadcast(CBaseJob::Ptr& job) override;
    void onBroadcast(const CFdbMessage& message);
    void onReply(CBaseJob::Ptr& job) override;
    void onStatus(CBaseJob::Ptr& job, int32_t error, const char* text) override;

private:
    /// The outermost frame of this library on a thread of the bus or the GPIO library, whatever the application's
    /// callback does to that thread. `task` is what to do, unless the gate is closed; `what` is lost when memory is
    /// short.
    void onLibraryThread(const char* what, const std::function<void()>& task);
    /// What the GPIO library calls.
    static void onInterrupt(void* context);
    static void gpioIsrCallback(void* context);

    SignalCallback currentSignalCallback();
    AvailableSignalCallback currentAvailableCallback();
    void feedbackSignalStatus(int code_id, qvn::platform::vehicle::VehiclePropertyStatus status,
                              const qvn::tables::MessageRow* message);
    void watchReverseLine();
    void tellReverseLine();
    void tellStatus(const qvn::tables::MessageRow& message, qvn::platform::vehicle::VehiclePropertyStatus status);
    void endSending();
    bool hand(int code, const can_service::SetSignalValueRequest& request);

    SignalCallback signalCallback QVN_GUARDED_BY(callbackMutex);
    // Stays true once the service was reached: from then on the reverse line is left to CAN.
    std::atomic<bool> online{false};
    std::atomic<qvn::platform::vehicle::SetErrorCallback> errorCallback{nullptr};
    ServiceObserver* observer = nullptr;
    // From the first subscription on the line makes values.
    std::atomic<bool> lineSubscribed{false};
    std::shared_ptr<T21CanSignalAdapter> signalAdapter;
    std::atomic<const VehilceClientInfo*> signal_table_{nullptr};
    AvailableSignalCallback availableSignalCallback QVN_GUARDED_BY(callbackMutex);

    // Guards the two function objects, which are set while broadcasts may already arrive, and the order in which the
    // status callback is replaced.
    qvn::sync::Mutex callbackMutex;
    std::uint64_t subscriptionNumber QVN_GUARDED_BY(callbackMutex) = 0;
    CallbackGate gate;
    std::atomic<bool> takenDown{false};
    std::atomic<bool> threadLost{false};
    // Held while a request is handed to the bus, which must not end meanwhile.
    qvn::sync::Mutex sendMutex;
    bool sendingEnded QVN_GUARDED_BY(sendMutex) = false;
    // Used by onBroadcast only; keeps its storage from one signal to the next.
    can_service::BroadcastSignal broadcastSignal;
};

#endif  // CANSERVICE_T21_CAN_SERVICE_FDBUS_CLIENT_H
