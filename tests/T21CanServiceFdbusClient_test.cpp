#include "canservice/T21CanServiceFdbusClient.h"

#include <algorithm>
#include <chrono>
#include <future>

#include "support/ClientTest.h"
#include "tables/SubscriptionCodes.h"

namespace {

using namespace qvn::test;

class T21CanServiceFdbusClientTest : public ClientTest {};

TEST_F(T21CanServiceFdbusClientTest, ConstructionLogsAndOpensTheGpioPort) {
    makeClient();
    const std::vector<LogLine> log = log_recorder::linesOf("T21CanServiceFdbusClient");
    ASSERT_EQ(log.size(), 1u);
    EXPECT_EQ(log[0].level, 1);
    EXPECT_EQ(log[0].text, "T21CanServiceFdbusClient construct...");
    EXPECT_EQ(fake_gpio::calls(), std::vector<std::string>{"request 0"});
    client.reset();
    EXPECT_EQ(fake_gpio::calls(), (std::vector<std::string>{"request 0", "exit"}));
}

TEST_F(T21CanServiceFdbusClientTest, SubscribesEverythingInOrderAndLogsIt) {
    makeClient();
    connectClient();
    const std::vector<std::uint32_t> codes = server.subscriptions.entries()[0];
    EXPECT_TRUE(std::equal(codes.begin(), codes.end(), std::begin(qvn::tables::kSubscriptionCodes)));

    ASSERT_TRUE(log_recorder::waitForLine("onOnline", "T21CanServiceFdbusClient online..."));
    const std::vector<LogLine> log = log_recorder::linesOf("onOnline");
    ASSERT_EQ(log.size(), 2u);
    EXPECT_EQ(log[0].level, 1);
    EXPECT_EQ(log[0].text, "T21CanServiceFdbusClient onOnline...");
    EXPECT_EQ(log[1].level, 3);
}

TEST_F(T21CanServiceFdbusClientTest, SubscribesAgainWhenTheServiceComesBack) {
    makeClient();
    connectClient();
    server.unbind();
    server.bind("svc://fdbus_can_service");
    ASSERT_TRUE(server.waitForSubscriptions(2));
    EXPECT_EQ(server.subscriptions.entries()[1].size(), qvn::tables::kSubscriptionCodes.size());
    server.signal(can_service::QVN_GET_BCM1_DrvDoorSts, "\x01");
    EXPECT_TRUE(values.waitForSize(1));
    EXPECT_EQ(log_recorder::linesOf("onOnline").size(), 4u);
}

TEST_F(T21CanServiceFdbusClientTest, InitialValuesArriveAsBroadcasts) {
    server.setInitialValue(can_service::QVN_GET_ESP_FD2_VehSpd, std::string("\x07\xD0", 2));
    makeClient();
    connectClient();
    ASSERT_TRUE(values.waitForSize(1));
    EXPECT_EQ(values.entries()[0].value.value.floatValues, std::vector<float>{112.5f});
}

TEST_F(T21CanServiceFdbusClientTest, DestructionUnderTrafficIsSafe) {
    for (int round = 0; round < 20; ++round) {
        makeClient();
        client->connect("svc://fdbus_can_service");
        ASSERT_TRUE(server.waitForSubscriptions(static_cast<std::size_t>(round) + 1));
        for (int i = 0; i < 200; ++i) {
            server.signal(can_service::QVN_GET_BCM1_DrvDoorSts, "\x01");
        }
        client.reset();
        values.clear();
        worker.flush();
        EXPECT_TRUE(values.entries().empty());
    }
}

/// A client that is taken off the bus, or off a bus that is about to end.
class EndingClientTest : public ClientTest {
protected:
    EndingClientTest() {
        makeClient();
        connectClient();
    }
    bool endCallbacksNow() { return client->endCallbacks(std::chrono::steady_clock::now()); }
};

TEST_F(EndingClientTest, DropsWhatIsQueuedBehindACallbackThatRuns) {
    std::promise<void> entered;
    std::promise<void> release;
    client->registerSignalCallback([&](VehiclePropValue value, PropertyType type) {
        values.add({std::move(value), type});
        entered.set_value();
        release.get_future().wait();
    });
    for (int i = 0; i < 100; ++i) {
        server.signal(can_service::QVN_GET_BCM1_DrvDoorSts, "\x01");
    }
    entered.get_future().wait();
    EXPECT_FALSE(endCallbacksNow()) << "a callback runs";
    release.set_value();
    EXPECT_TRUE(client->endCallbacks(std::chrono::steady_clock::now() + std::chrono::seconds(60)));
    client->stop();
    EXPECT_EQ(values.entries().size(), 1u);
}

TEST_F(EndingClientTest, DoesNotWaitForTheCallbackThatEndsIt) {
    std::promise<bool> result;
    client->registerSignalCallback([&](VehiclePropValue, PropertyType) {
        EXPECT_TRUE(client->isInsideCallback());
        const bool ended = client->endCallbacks(std::chrono::steady_clock::now() + std::chrono::hours(1));
        client->leaveBus(true);
        result.set_value(ended);
    });
    EXPECT_FALSE(client->isInsideCallback());
    server.signal(can_service::QVN_GET_BCM1_DrvDoorSts, "\x01");
    EXPECT_FALSE(result.get_future().get());
    EXPECT_TRUE(client->endCallbacks(std::chrono::steady_clock::now() + std::chrono::seconds(60)));
}

TEST_F(EndingClientTest, ReportsNoFurtherPropertyOfAMessage) {
    client->registerErrSignalCallback(&Application::status);
    Application::onStatus = [this](const StatusChange&) { endCallbacksNow(); };
    server.messageStatus(can_service::QVN_GET_HAP_FD3, 64);
    ASSERT_TRUE(log_recorder::waitForLine("onBroadcast", "can service dispatchs signals timeout!"));
    EXPECT_EQ(Application::statuses.entries().size(), 1u);
}

TEST_F(EndingClientTest, IsDeafAndMuteOnceItHasStopped) {
    for (const bool atOnce : {true, false}) {
        endCallbacksNow();
        atOnce ? client->leaveBus(true) : client->stop();
        values.clear();
        EXPECT_FALSE(client->signalFeedback(static_cast<VehicleProperty>(0x21403033), 1));
        client->registerErrSignalCallback(&Application::status);
        fake_gpio::edge(0);
        EXPECT_TRUE(values.entries().empty());
        EXPECT_NE(fake_gpio::calls().back(), "register 87 3");
        client.reset();
        makeClient();
    }
    EXPECT_TRUE(server.requests.entries().empty());
}

TEST_F(EndingClientTest, LeavesNoInterruptThatARegistrationBroughtMeanwhile) {
    fake_gpio::beforeRegistration([this] { endCallbacksNow(); });
    client->registerErrSignalCallback(nullptr);
    EXPECT_EQ(fake_gpio::calls().back(), "exit");
}

}  // namespace
