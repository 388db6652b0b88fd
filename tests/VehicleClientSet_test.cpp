#include <gtest/gtest.h>
#include <vehicle/VehicleClient.h>

#include <limits>

#include "support/CanServiceDouble.h"
#include "support/ExpectedTables.h"
#include "support/LibraryTest.h"

namespace {

using namespace qvn::test;
using namespace qvn::platform::vehicle;

class VehicleClientSetTest : public LibraryTest {
protected:
    VehicleClientSetTest() { EXPECT_TRUE(server.waitForSubscriptions(1)); }

    /// What arrived since the last call, after `count` requests at least.
    std::vector<SetRequest> requests(std::size_t count) {
        EXPECT_TRUE(server.requests.waitForSize(count));
        std::vector<SetRequest> all = server.requests.entries();
        server.requests.clear();
        return all;
    }
    bool setInt(int property, int number) {
        std::vector<int> value = {number, 99};
        return client.setInt32Property(property, value);
    }
    bool setLong(int property, long number) {
        std::vector<long> value = {number, 99};
        return client.setInt64Property(property, value);
    }
    bool setFloat(int property, float number) {
        std::vector<float> value = {number, 99};
        return client.setFloatProperty(property, value);
    }
    bool setByte(int property, unsigned char number) {
        std::vector<unsigned char> value = {number, 99};
        return client.setByteProperty(property, value);
    }
    bool setBool(int property, bool value) { return client.setBoolProperty(property, value); }

    CanServiceDouble server;
    VehicleClient client;
};

std::string raw(int value) {
    return std::string(1, static_cast<char>(value));
}
std::string raw(int high, int low) {
    return raw(high) + raw(low);
}

/// The raw bytes in which a signal of this many bytes and this offset carries a value.
std::string raw(const Words& set, int value) {
    const int sum = value + std::stoi(set[2]);
    return set[1] == "1" ? raw(sum) : raw(sum >> 8, sum & 0xFF);
}

TEST_F(VehicleClientSetTest, EverySettablePropertyByEverySetter) {
    std::size_t settable = 0;
    for (const Words& set : expected("set")) {
        const std::vector<int> rows = propertiesOf(set[0]);
        if (rows.empty()) {
            continue;
        }
        SCOPED_TRACE(set[0]);
        EXPECT_TRUE(setInt(rows[0], 3));
        EXPECT_TRUE(setLong(rows[0], 3));
        EXPECT_TRUE(setFloat(rows[0], 3.9f));
        EXPECT_TRUE(setByte(rows[0], 3));
        EXPECT_TRUE(setBool(rows[0], true));
        const int code = static_cast<int>(codeOf(set[0]));
        std::vector<SetRequest> sent(4 * rows.size(), {code, raw(set, 3)});
        sent.insert(sent.end(), rows.size(), {code, raw(set, 1)});
        EXPECT_EQ(requests(sent.size()), sent);
        ++settable;
    }
    EXPECT_EQ(settable, 85u);
}

TEST_F(VehicleClientSetTest, Edges) {
    constexpr int kOneByte = 0x21403033;  // CarMdlDispCmd
    constexpr int kYaw = 0x21008232;      // value + 75
    constexpr int kRoll = 0x21008234;     // value + 45
    constexpr int kHeadX = 0x21008235;    // two bytes, value + 500
    constexpr int kTouchX = 0x21405276;   // two bytes
    const struct {
        const char* what;
        bool done;
        std::string expected;
    } cases[] = {
        {"int -1", setInt(kOneByte, -1), raw(0xFF)},
        {"int 300", setInt(kOneByte, 300), raw(0x2C)},
        {"long 0x12345", setLong(kOneByte, 0x12345), raw(0x45)},
        {"long -2", setLong(kOneByte, -2), raw(0xFE)},
        {"byte 255", setByte(kOneByte, 255), raw(0xFF)},
        {"false", setBool(kOneByte, false), raw(0x00)},
        {"float -1", setFloat(kOneByte, -1.0f), raw(0x00)},
        {"float 256", setFloat(kOneByte, 256.0f), raw(0x00)},
        {"float NaN", setFloat(kOneByte, std::numeric_limits<float>::quiet_NaN()), raw(0x00)},
        {"float infinity", setFloat(kOneByte, std::numeric_limits<float>::infinity()), raw(0xFF)},
        {"yaw int -75", setInt(kYaw, -75), raw(0x00)},
        {"yaw int -80", setInt(kYaw, -80), raw(0xFB)},
        {"yaw float -80", setFloat(kYaw, -80.0f), raw(0x00)},
        {"yaw float -74.5", setFloat(kYaw, -74.5f), raw(0x00)},
        {"yaw byte 200", setByte(kYaw, 200), raw(0x13)},
        {"yaw true", setBool(kYaw, true), raw(0x4C)},
        {"roll int 10", setInt(kRoll, 10), raw(0x37)},
        {"x int -500", setInt(kHeadX, -500), raw(0x00, 0x00)},
        {"x int 0", setInt(kHeadX, 0), raw(0x01, 0xF4)},
        {"x int 100", setInt(kHeadX, 100), raw(0x02, 0x58)},
        {"x long 65535", setLong(kHeadX, 65535), raw(0x01, 0xF3)},
        {"x float -500.5", setFloat(kHeadX, -500.5f), raw(0x00, 0x00)},
        {"x float 1e30", setFloat(kHeadX, 1e30f), raw(0xFF, 0xFF)},
        {"touch int 300", setInt(kTouchX, 300), raw(0x01, 0x2C)},
        {"touch int -1", setInt(kTouchX, -1), raw(0xFF, 0xFF)},
        {"touch float 65536", setFloat(kTouchX, 65536.0f), raw(0x00, 0x00)},
    };
    const std::size_t count = sizeof(cases) / sizeof(cases[0]);
    const std::vector<SetRequest> arrived = requests(count);
    ASSERT_EQ(arrived.size(), count);
    for (std::size_t i = 0; i < count; ++i) {
        EXPECT_TRUE(cases[i].done) << cases[i].what;
        EXPECT_EQ(arrived[i].raw, cases[i].expected) << cases[i].what;
    }
}

TEST_F(VehicleClientSetTest, WhatCannotBeSet) {
    std::string text = "1";
    EXPECT_FALSE(setInt(0x11410A10, 1));  // five received signals
    EXPECT_FALSE(setFloat(0x21600E1F, 1));
    EXPECT_FALSE(setByte(0x12345678, 1));  // unknown
    EXPECT_FALSE(client.setStringProperty(0x21403033, text));
    EXPECT_TRUE(setInt(0x21403033, 1));
    EXPECT_EQ(requests(1), (std::vector<SetRequest>{{0x004A07F0, "\x01"}}));
}

}  // namespace
