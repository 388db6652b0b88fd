#include "canservice/CanServiceFdbusClientManager.h"

#include <string>
#include <utility>

namespace {

const char kServiceName[] = "fdbus_can_service";

}  // namespace

CanServiceFdbusClientManager::CanServiceFdbusClientManager(const VehilceClientInfo* table,
                                                           const SignalCallback& callback, CBaseWorker* worker) {
    createCanServiceFdbusClient(table, callback, worker);
}

void CanServiceFdbusClientManager::createCanServiceFdbusClient(const VehilceClientInfo* table,
                                                               const SignalCallback& callback, CBaseWorker* worker) {
    const std::string address = std::string("svc://") + kServiceName;
    const std::string name = std::string(kServiceName) + "_client";
    client = std::make_shared<T21CanServiceFdbusClient>(name.c_str(), worker);
    client->enableReconnect(true);
    client->connect(address.c_str());
    client->registerSignalCallback(callback);
    client->setFuncSignalTable(table);
}

void CanServiceFdbusClientManager::registerErrSignalCallback(qvn::platform::vehicle::SetErrorCallback callback) {
    client->registerErrSignalCallback(callback);
}

void CanServiceFdbusClientManager::registerAvailableSignalCallabck(AvailableSignalCallback callback) {
    client->registerAvailableSignalCallabck(std::move(callback));
}

void CanServiceFdbusClientManager::stop() {
    client->stop();
}
