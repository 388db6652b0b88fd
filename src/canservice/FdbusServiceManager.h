#ifndef CANSERVICE_FDBUS_SERVICE_MANAGER_H
#define CANSERVICE_FDBUS_SERVICE_MANAGER_H

#include <memory>

#include "canservice/CanServiceFdbusClientManager.h"

/// The core's side of the CAN service connection. Set the table, the function type and the signal callback, then
/// init(); everything below init() needs it to have run.
class FdbusServiceManager {
public:
    /// `worker` runs the connection's callbacks; it must have been started and outlive the manager.
    explicit FdbusServiceManager(CBaseWorker* worker);

    void setFuncType(FUNCTION_TYPE type);
    void setSignalTable(const VehilceClientInfo* table);
    void registerSignalCallback(SignalCallback callback);
    /// Must outlive the manager; may be left away.
    void setObserver(ServiceObserver* newObserver) { observer = newObserver; }

    /// Creates the client and connects it. A further call replaces the client.
    void init();
    void createCanServiceClientManager();

    void registerErrSignalCallback(qvn::platform::vehicle::SetErrorCallback callback, std::uint64_t subscription = 0);
    void registerAvailableSignalCallabck(AvailableSignalCallback callback);

    template <class T>
    bool signalFeedback(qvn::platform::vehicle::VehicleProperty property, T value) {
        return clientManager->signalFeedback(property, value);
    }
    void observeReverseLine();
    // These do nothing, and find nothing at work, before init(); otherwise see T21CanServiceFdbusClient.
    void stop();
    bool endCallbacks(std::chrono::steady_clock::time_point deadline);
    void leaveBus(bool callbackRuns);
    bool isInsideCallback();
    bool hasLostThread();

private:
    CBaseWorker* worker;
    std::shared_ptr<CanServiceFdbusClientManager> clientManager;
    const VehilceClientInfo* signalTable = nullptr;
    SignalCallback signalCallback;
    ServiceObserver* observer = nullptr;
    FUNCTION_TYPE functionType{};
};

#endif  // CANSERVICE_FDBUS_SERVICE_MANAGER_H
