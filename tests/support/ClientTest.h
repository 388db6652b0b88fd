#pragma once

#include <memory>

#include "canservice/T21CanServiceFdbusClient.h"
#include "common.base.canservice.pb.h"
#include "support/CanServiceDouble.h"
#include "support/FakeGpioport.h"
#include "support/LibraryTest.h"
#include "support/LogRecorder.h"
#include "tables/SignalTable.h"

namespace qvn::test {

/// A client whose offline notice can be waited for.
class TestClient : public T21CanServiceFdbusClient {
public:
    using T21CanServiceFdbusClient::T21CanServiceFdbusClient;
    ~TestClient() override { stop(); }

    bool waitForOffline() { return mOffline.waitForSize(1); }

protected:
    void onOffline(FdbSessionId_t session, bool isLast) override {
        T21CanServiceFdbusClient::onOffline(session, isLast);
        mOffline.add(session);
    }

private:
    Journal<FdbSessionId_t> mOffline;
};

/// A CAN service client by itself, on a worker of its own, with a CAN service to talk to.
class ClientTest : public LibraryTest {
protected:
    ClientTest() { worker.start(); }

    /// With everything registered that the core would register, except for the status callback.
    void makeClient() {
        client = std::make_unique<TestClient>("fdbus_can_service_client", &worker);
        client->registerSignalCallback([this](VehiclePropValue value, PropertyType type) {
            values.add({std::move(value), type});
        });
        client->setFuncSignalTable(hap_signal_table);
    }
    void connectClient() {
        client->connect("svc://fdbus_can_service");
        ASSERT_TRUE(server.waitForSubscriptions(1));
    }
    /// Everything that was broadcast so far has been handled when this returns: broadcasts keep their order.
    void settle() {
        const int code = can_service::QVN_GET_EPB1_EPBSts;
        server.signal(code, "\x7F");
        ASSERT_TRUE(log_recorder::waitForLine("signalAdapter", "EPB1_EPBSts value:127"));
    }

    CanServiceDouble server;
    CBaseWorker worker;
    Journal<Change> values;
    std::unique_ptr<TestClient> client;
};

}  // namespace qvn::test
