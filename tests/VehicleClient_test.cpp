#include <vehicle/VehicleClient.h>

#include <set>
#include <thread>

#include "support/CanServiceDouble.h"
#include "support/FakePsis.h"
#include "support/LibraryTest.h"
#include "support/LogRecorder.h"

namespace {

using namespace qvn::test;
using namespace qvn::platform::vehicle;

class VehicleClientTest : public LibraryTest {};

TEST_F(VehicleClientTest, AllThreadsGetTheOneInstance) {
    std::vector<std::thread> threads;
    Journal<VehicleClient*> clients;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&clients] { clients.add(VehicleClient::getInstance()); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const std::vector<VehicleClient*> got = clients.entries();
    EXPECT_EQ((std::set<VehicleClient*>(got.begin(), got.end()).size()), 1u);
    EXPECT_EQ(log_recorder::linesOf("T21CanServiceFdbusClient").size(), 1u);
    EXPECT_EQ(VehicleClient::getInstance(), got[0]);
}

TEST_F(VehicleClientTest, AnInstanceThatIsDeletedDoesNotComeBack) {
    CanServiceDouble server;
    delete VehicleClient::getInstance();  // perhaps that of a test before, with another bus
    VehicleClient* const instance = VehicleClient::getInstance();
    ASSERT_TRUE(server.waitForSubscriptions(1));
    delete instance;
    VehicleClient client;  // another client of the process does not touch the instance
    EXPECT_TRUE(VehicleClient::getInstance()->subscribe(&Application::changed, {0x21400E20}, nullptr));
    EXPECT_NE(VehicleClient::getInstance(), &client);
    ASSERT_TRUE(server.waitForSubscriptions(3));
    server.signal(0x031902D0, "\x01");
    EXPECT_TRUE(Application::changes.waitForSize(1));
}

TEST_F(VehicleClientTest, ForwardsToTheCore) {
    CanServiceDouble server;
    VehicleClient client;
    ASSERT_TRUE(server.waitForSubscriptions(1));
    EXPECT_TRUE(client.subscribe(&Application::changed, {0x21600E1F}, &Application::status));
    server.signal(0x01384CD0, std::string("\x07\xD0", 2));
    server.signal(0x031902D0, "\x01");
    server.messageStatus(0x016B0000, 64);
    ASSERT_TRUE(Application::statuses.waitForSize(1));

    VehiclePropValue value;
    bool yes = false;
    std::vector<int> integers;
    std::vector<long> longs;
    std::vector<float> floats;
    std::vector<unsigned char> bytes;
    std::string text;
    EXPECT_TRUE(client.getPropValue(0x21600E1F, &value));
    EXPECT_EQ(client.getPropertyType(0x21600E1F), PROPERTY_TYPE_FLOAT);
    EXPECT_TRUE(client.getBoolProperty(0x21400E20, yes));
    EXPECT_TRUE(yes);
    EXPECT_TRUE(client.getInt32Property(0x21400E20, integers));
    EXPECT_TRUE(client.getFloatProperty(0x21600E1F, floats));
    EXPECT_FALSE(client.getInt64Property(0x21400E20, longs));
    EXPECT_FALSE(client.getByteProperty(0x21400E20, bytes));
    EXPECT_FALSE(client.getStringProperty(0x21400E20, text));
    EXPECT_EQ(floats, value.value.floatValues);

    integers = {1};
    longs = {2};
    floats = {3};
    bytes = {4};
    VehiclePropValue toSet;
    toSet.value.int32Values = {5};
    EXPECT_TRUE(client.setBoolProperty(0x21403033, yes));
    EXPECT_TRUE(client.setInt32Property(0x21403034, integers));
    EXPECT_TRUE(client.setInt64Property(0x21403035, longs));
    EXPECT_TRUE(client.setFloatProperty(0x21403036, floats));
    EXPECT_TRUE(client.setByteProperty(0x2140304A, bytes));
    EXPECT_TRUE(client.setPropValue(0x2140303B, &toSet));
    EXPECT_FALSE(client.setStringProperty(0x21403033, text));
    ASSERT_TRUE(server.requests.waitForSize(6));
    EXPECT_EQ(server.requests.entries(), (std::vector<SetRequest>{{0x004A07F0, "\x01"},
                                                                  {0x004A00F0, "\x01"},
                                                                  {0x004A0770, "\x02"},
                                                                  {0x004A07D0, "\x03"},
                                                                  {0x004A06F0, "\x04"},
                                                                  {0x004A0630, "\x05"}}));

    EXPECT_TRUE(client.unsubscribe(nullptr, {}));
    EXPECT_FALSE(client.getInt32Property(0x21400E20, integers));
    EXPECT_TRUE(client.subscribe(nullptr, {}, nullptr));
}

TEST_F(VehicleClientTest, AFailedStartLeavesAnInstanceThatRefuses) {
    FakePsis::instance().initResult = 1;
    VehicleClient client;
    EXPECT_FALSE(client.subscribe(&Application::changed, {0x21600E1F}, nullptr));
    VehiclePropValue value;
    EXPECT_FALSE(client.getPropValue(0x21600E1F, &value));
}

}  // namespace
