#include "support/CoreTest.h"

namespace {

using namespace qvn::test;
using namespace qvn::platform::vehicle;

constexpr int kHeadYaw = 0x21008232;  // one byte, value + 75
constexpr int kHeadYawCode = 0x024E0F80;

class PropertySetTest : public CoreTest {
protected:
    PropertySetTest() { startCoreWithService(); }

    /// Everything that was sent before has arrived: requests keep their order.
    std::vector<SetRequest> requests() {
        std::vector<int> last = {0x55};
        EXPECT_TRUE(core->setInt32Property(0x21402036, last));
        EXPECT_TRUE(server->requests.waitUntil(
            [](const std::vector<SetRequest>& all) { return !all.empty() && all.back().code == 0x03701BD0; }));
        std::vector<SetRequest> all = server->requests.entries();
        all.pop_back();
        server->requests.clear();
        return all;
    }
    /// Every kind of payload at once, each telling which one it is.
    static VehiclePropValue mixedValue() {
        VehiclePropValue value;
        value.value.int32Values = {3, 90};
        value.value.int64Values = {4, 90};
        value.value.floatValues = {-80.0f, 90.0f};
        value.value.bytes = {6, 90};
        return value;
    }
};

TEST_F(PropertySetTest, SetPropValueSendsThePayloadOfTheCachedType) {
    const struct {
        PropertyType type;
        std::string raw;
    } cases[] = {
        {PROPERTY_TYPE_BOOLEAN, std::string("\x51", 1)},  // bytes[0], 6 + 75
        {PROPERTY_TYPE_INT32, std::string("\x4E", 1)},    // 3 + 75
        {PROPERTY_TYPE_INT64, std::string("\x4F", 1)},    // 4 + 75
        {PROPERTY_TYPE_FLOAT, std::string("\x00", 1)},    // -80 + 75, saturated
        {PROPERTY_TYPE_BYTES, std::string("\x51", 1)},    // bytes[0], 6 + 75
    };
    VehiclePropValue value = mixedValue();
    for (const auto& [type, raw] : cases) {
        SCOPED_TRACE(type);
        core->dispatchSingal(intValue(kHeadYaw, 1), type);
        EXPECT_TRUE(core->setPropValue(kHeadYaw, &value));
        EXPECT_EQ(requests(), (std::vector<SetRequest>{{kHeadYawCode, raw}}));
    }
    core->dispatchSingal(intValue(kHeadYaw, 1), PROPERTY_TYPE_UNKNOWN);
    EXPECT_TRUE(core->setPropValue(kHeadYaw, &value));
    EXPECT_TRUE(requests().empty());
}

TEST_F(PropertySetTest, SetPropValueSendsOncePerRecord) {
    VehiclePropValue value = intValue(0, 1);
    EXPECT_TRUE(core->setPropValue(0x21401C23, &value));  // two records with two rows each
    EXPECT_EQ(requests(), (std::vector<SetRequest>(4, {0x004A0550, "\x01"})));

    log_recorder::reset();
    EXPECT_TRUE(core->setPropValue(0x11410A10, &value));  // five records, five rows, none of which can be set
    EXPECT_EQ(log_recorder::linesOf("signalFeedback").size(), 50u);
    EXPECT_TRUE(requests().empty());
    EXPECT_FALSE(core->setPropValue(0x12345678, &value));
}

TEST_F(PropertySetTest, TheSetPathDoesNotTouchTheCache) {
    std::vector<int> number = {7, 9};
    EXPECT_TRUE(core->setInt32Property(0x21403033, number));
    EXPECT_EQ(requests(), (std::vector<SetRequest>{{0x004A07F0, "\x07"}}));
    VehiclePropValue cached;
    EXPECT_TRUE(core->getPropValue(0x21403033, &cached));
    EXPECT_TRUE(cached.value.int32Values.empty());
}

TEST_F(PropertySetTest, NoValueIsRefusedWithALogLine) {
    std::vector<int> integers;
    std::vector<long> longs;
    std::vector<float> floats;
    std::vector<unsigned char> bytes;
    VehiclePropValue empty;
    log_recorder::reset();
    EXPECT_FALSE(core->setInt32Property(kHeadYaw, integers));
    EXPECT_FALSE(core->setInt64Property(kHeadYaw, longs));
    EXPECT_FALSE(core->setFloatProperty(kHeadYaw, floats));
    EXPECT_FALSE(core->setByteProperty(kHeadYaw, bytes));
    EXPECT_FALSE(core->setPropValue(kHeadYaw, nullptr));
    for (const PropertyType type :
         {PROPERTY_TYPE_BOOLEAN, PROPERTY_TYPE_INT32, PROPERTY_TYPE_INT64, PROPERTY_TYPE_FLOAT, PROPERTY_TYPE_BYTES}) {
        core->dispatchSingal(intValue(kHeadYaw, 1), type);
        EXPECT_FALSE(core->setPropValue(kHeadYaw, &empty)) << type;
    }
    int refusals = 0;  // among what the worker may log of its subscription
    for (const LogLine& line : log_recorder::lines()) {
        refusals += line.level == 1 && line.text == "no value given, set of property:553681458 refused!";
    }
    EXPECT_EQ(refusals, 10);
    EXPECT_TRUE(requests().empty());
}

}  // namespace
