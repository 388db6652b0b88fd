#ifndef CANSERVICE_T21_CAN_SERVICE_FDBUS_CLIENT_H
#define CANSERVICE_T21_CAN_SERVICE_FDBUS_CLIENT_H

#include <common_base/fdbus.h>
#include <vehicle/VehicleProperty.h>

#include <atomic>
#include <functional>
#include <memory>

#include "adapter/T21CanSignalAdapter.h"
#include "common.base.canservice.pb.h"
#include "sync/Mutex.h"

using SignalCallback =
    std::function<void(qvn::platform::vehicle::VehiclePropValue, qvn::platform::vehicle::PropertyType)>;
using AvailableSignalCallback = std::function<void(qvn::platform::vehicle::VehicleProperty)>;

/// The FDBus client of the CAN service. Bus callbacks run on the worker it was given; everything else may be called
/// from any thread. Callbacks into the core run without a lock of this class held.
class T21CanServiceFdbusClient : public CBaseClient {
public:
    T21CanServiceFdbusClient(const char* name, CBaseWorker* worker);
    /// No callback runs any more when it returns. Must not run on the worker.
    ~T21CanServiceFdbusClient() override;

    void setFuncSignalTable(const VehilceClientInfo* table);
    void registerSignalCallback(SignalCallback callback);
    void registerAvailableSignalCallabck(AvailableSignalCallback callback);
    /// Stores the application's status callback, acts on the reverse line's present level and starts watching it.
    void registerErrSignalCallback(qvn::platform::vehicle::SetErrorCallback callback);

    /// Sends one set request for each enabled table row of the property, in table order, on the caller's thread.
    /// Returns the outcome of the last one: false if that row's signal cannot be set, or if there was no row.
    /// T is int, long, float or unsigned char.
    template <class T>
    bool signalFeedback(qvn::platform::vehicle::VehicleProperty property, T value);

    /// Reports the state of a whole CAN message for every property that one of its signals feeds.
    void feedbackSignalStatus(int code_id, qvn::platform::vehicle::VehiclePropertyStatus status);

    /// Injects the parking work command (1 opens the views, 0 closes them) and power mode "on" as if they had come from
    /// CAN.
    void sendPasworkCmd(int cmd);

    /// Ends callbacks from the bus and the reverse line, for good; a further call does nothing. Must not run on the
    /// worker.
    void stop();

protected:
    void onOnline(FdbSessionId_t session, bool isFirst) override;
    void onOffline(FdbSessionId_t session, bool isLast) override;
    void onBroadcast(CBaseJob::Ptr& job) override;
    void onReply(CBaseJob::Ptr& job) override;
    void onStatus(CBaseJob::Ptr& job, int32_t error, const char* text) override;

private:
    static void gpioIsrCallback(void* context);

    SignalCallback currentSignalCallback();
    AvailableSignalCallback currentAvailableCallback();

    SignalCallback signalCallback QVN_GUARDED_BY(callbackMutex);
    // Stays true once the service was reached: from then on the reverse line is left to CAN.
    std::atomic<bool> online{false};
    std::atomic<qvn::platform::vehicle::SetErrorCallback> errorCallback{nullptr};
    std::shared_ptr<T21CanSignalAdapter> signalAdapter;
    std::atomic<const VehilceClientInfo*> signal_table_{nullptr};
    AvailableSignalCallback availableSignalCallback QVN_GUARDED_BY(callbackMutex);

    // Guards the two function objects, which are set while broadcasts may already arrive.
    qvn::sync::Mutex callbackMutex;
    std::atomic<bool> stopped{false};
    // Used by onBroadcast only; keeps its storage from one signal to the next.
    can_service::BroadcastSignal broadcastSignal;
};

#endif  // CANSERVICE_T21_CAN_SERVICE_FDBUS_CLIENT_H
