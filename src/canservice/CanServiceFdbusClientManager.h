#ifndef CANSERVICE_CAN_SERVICE_FDBUS_CLIENT_MANAGER_H
#define CANSERVICE_CAN_SERVICE_FDBUS_CLIENT_MANAGER_H

#include <memory>

#include "canservice/T21CanServiceFdbusClient.h"

/// Creates, connects and owns the one client of the CAN service.
class CanServiceFdbusClientManager {
public:
    CanServiceFdbusClientManager(const VehilceClientInfo* table, const SignalCallback& callback, CBaseWorker* worker,
                                 ServiceObserver* observer = nullptr);

    void createCanServiceFdbusClient(const VehilceClientInfo* table, const SignalCallback& callback,
                                     CBaseWorker* worker, ServiceObserver* observer = nullptr);
    void registerErrSignalCallback(qvn::platform::vehicle::SetErrorCallback callback, std::uint64_t subscription = 0);
    void registerAvailableSignalCallabck(AvailableSignalCallback callback);

    template <class T>
    bool signalFeedback(qvn::platform::vehicle::VehicleProperty property, T value) {
        return theClient->signalFeedback(property, value);
    }
    T21CanServiceFdbusClient& client() { return *theClient; }

private:
    std::shared_ptr<T21CanServiceFdbusClient> theClient;
};

#endif  // CANSERVICE_CAN_SERVICE_FDBUS_CLIENT_MANAGER_H
