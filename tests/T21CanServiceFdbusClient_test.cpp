#include "canservice/T21CanServiceFdbusClient.h"

#include <algorithm>

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
    EXPECT_EQ(codes.size(), 178u);
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
    EXPECT_EQ(server.subscriptions.entries()[1].size(), 178u);
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

}  // namespace
