#include "canservice/CanServiceFdbusClientManager.h"

#include <future>
#include <memory>
#include <string>
#include <utility>

#include "ipc_common_soc/ServiceName.h"

namespace {

/// Holds up a worker, and with it the bus callbacks that come after, until the gate is destroyed.
class WorkerGate {
public:
    explicit WorkerGate(CBaseWorker* worker) {
        if (worker != nullptr) {
            CBaseJob::Ptr job = std::make_shared<Wait>(opened.get_future());
            worker->sendAsync(job);
        }
    }
    ~WorkerGate() { opened.set_value(); }
    WorkerGate(const WorkerGate&) = delete;
    WorkerGate& operator=(const WorkerGate&) = delete;

private:
    class Wait : public CBaseJob {
    public:
        explicit Wait(std::future<void> until) : opened(std::move(until)) {}

    protected:
        void run(CBaseWorker*, Ptr&) override { opened.wait(); }

    private:
        std::future<void> opened;
    };

    std::promise<void> opened;
};

}  // namespace

CanServiceFdbusClientManager::CanServiceFdbusClientManager(const VehilceClientInfo* table,
                                                           const SignalCallback& callback, CBaseWorker* worker,
                                                           ServiceObserver* observer) {
    createCanServiceFdbusClient(table, callback, worker, observer);
}

void CanServiceFdbusClientManager::createCanServiceFdbusClient(const VehilceClientInfo* table,
                                                               const SignalCallback& callback, CBaseWorker* worker,
                                                               ServiceObserver* observer) {
    const std::string address = qvn::wire::serviceAddress(qvn::wire::kServiceName);
    const std::string name = std::string(qvn::wire::kServiceName) + "_client";
    theClient = std::make_shared<T21CanServiceFdbusClient>(name.c_str(), worker);
    theClient->setObserver(observer);
    theClient->enableReconnect(true);
    // The service answers the first subscribe with current values, which would be lost on a client without callback and
    // table.
    const WorkerGate gate(worker);
    theClient->connect(address.c_str());
    theClient->registerSignalCallback(callback);
    theClient->setFuncSignalTable(table);
}

void CanServiceFdbusClientManager::registerErrSignalCallback(qvn::platform::vehicle::SetErrorCallback callback,
                                                             std::uint64_t subscription) {
    theClient->registerErrSignalCallback(callback, subscription);
}

void CanServiceFdbusClientManager::registerAvailableSignalCallabck(AvailableSignalCallback callback) {
    theClient->registerAvailableSignalCallabck(std::move(callback));
}
