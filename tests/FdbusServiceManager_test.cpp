#include "canservice/FdbusServiceManager.h"

#include "support/CanServiceDouble.h"
#include "support/LibraryTest.h"
#include "tables/SignalTable.h"

namespace {

using namespace qvn::test;

class FdbusServiceManagerTest : public LibraryTest {
protected:
    FdbusServiceManagerTest() { worker.start(); }

    CanServiceDouble server;
    CBaseWorker worker;
    FdbusServiceManager manager{&worker};
    Journal<int> properties;
};

TEST_F(FdbusServiceManagerTest, InitCreatesAClientThatReportsToTheSignalCallback) {
    manager.setSignalTable(hap_signal_table);
    manager.setFuncType(FUNCTION_TYPE_HAP);
    manager.registerSignalCallback([this](VehiclePropValue value, PropertyType) { properties.add(value.prop); });
    manager.init();
    ASSERT_TRUE(server.waitForSubscriptions(1));
    server.signal(0x031902D0, "\x01");
    ASSERT_TRUE(properties.waitForSize(1));
    EXPECT_EQ(properties.entries()[0], 0x21400E20);
}

TEST_F(FdbusServiceManagerTest, CallbacksAndSetsGoDownToTheClient) {
    manager.setSignalTable(hap_signal_table);
    manager.init();
    manager.registerErrSignalCallback(&Application::status);
    manager.registerAvailableSignalCallabck([this](VehicleProperty property) { properties.add(property); });
    ASSERT_TRUE(server.waitForSubscriptions(1));
    server.messageStatus(0x016B0000, 0);
    ASSERT_TRUE(properties.waitForSize(1));
    EXPECT_EQ(properties.entries()[0], 0x21405433);
    EXPECT_EQ(Application::statuses.entries().size(), 1u);

    EXPECT_TRUE(manager.signalFeedback(static_cast<VehicleProperty>(0x21403033), 5));
    ASSERT_TRUE(server.requests.waitForSize(1));
    EXPECT_EQ(server.requests.entries()[0], (SetRequest{0x004A07F0, "\x05"}));
}

TEST_F(FdbusServiceManagerTest, AnotherInitReplacesTheClient) {
    manager.registerSignalCallback([this](VehiclePropValue value, PropertyType) { properties.add(value.prop); });
    manager.setSignalTable(hap_signal_table);
    manager.init();
    ASSERT_TRUE(server.waitForSubscriptions(1));
    manager.init();
    ASSERT_TRUE(server.waitForSubscriptions(2));
    server.signal(0x031902D0, "\x01");
    server.signal(0x016B0760, "\x01");
    ASSERT_TRUE(properties.waitForSize(2));
    EXPECT_EQ(properties.entries(), (std::vector<int>{0x21400E20, 0x21405433}));
}

/// A signal callback that takes its time to be handed over: until the service has been asked for its values, or 0.2 s.
struct SlowToArrive {
    SlowToArrive(CanServiceDouble& ofService, Journal<int>& forValues) : service(ofService), values(forValues) {}
    SlowToArrive(const SlowToArrive& other) : service(other.service), values(other.values) {
        service.subscriptions.waitForSize(1, std::chrono::milliseconds(200));
    }
    void operator()(const VehiclePropValue& value, PropertyType) const { values.add(value.prop); }

    CanServiceDouble& service;
    Journal<int>& values;
};

TEST_F(FdbusServiceManagerTest, TheFirstValuesWaitForTheCallback) {
    server.setInitialValue(0x031902D0, "\x01");
    manager.setSignalTable(hap_signal_table);
    manager.registerSignalCallback(SlowToArrive(server, properties));
    manager.init();
    ASSERT_TRUE(properties.waitForSize(1));
    EXPECT_EQ(properties.entries()[0], 0x21400E20);
}

}  // namespace
