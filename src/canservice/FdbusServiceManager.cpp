#include "canservice/FdbusServiceManager.h"

#include <utility>

FdbusServiceManager::FdbusServiceManager(CBaseWorker* workerToUse) : worker(workerToUse) {}

void FdbusServiceManager::setFuncType(FUNCTION_TYPE type) {
    functionType = type;
}

void FdbusServiceManager::setSignalTable(const VehilceClientInfo* table) {
    signalTable = table;
}

void FdbusServiceManager::registerSignalCallback(SignalCallback callback) {
    signalCallback = std::move(callback);
}

void FdbusServiceManager::init() {
    createCanServiceClientManager();
}

void FdbusServiceManager::createCanServiceClientManager() {
    clientManager = std::make_shared<CanServiceFdbusClientManager>(signalTable, signalCallback, worker, observer);
}

void FdbusServiceManager::registerErrSignalCallback(qvn::platform::vehicle::SetErrorCallback callback,
                                                    std::uint64_t subscription) {
    clientManager->registerErrSignalCallback(callback, subscription);
}

void FdbusServiceManager::registerAvailableSignalCallabck(AvailableSignalCallback callback) {
    clientManager->registerAvailableSignalCallabck(std::move(callback));
}

void FdbusServiceManager::observeReverseLine() {
    clientManager->client().observeReverseLine();
}

void FdbusServiceManager::stop() {
    if (clientManager) {
        clientManager->client().stop();
    }
}

bool FdbusServiceManager::endCallbacks(std::chrono::steady_clock::time_point deadline) {
    return !clientManager || clientManager->client().endCallbacks(deadline);
}

void FdbusServiceManager::leaveBus(bool callbackRuns) {
    if (clientManager) {
        clientManager->client().leaveBus(callbackRuns);
    }
}

bool FdbusServiceManager::isInsideCallback() {
    return clientManager && clientManager->client().isInsideCallback();
}

bool FdbusServiceManager::hasLostThread() {
    return clientManager && clientManager->client().hasLostThread();
}
