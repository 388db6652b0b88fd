#include "support/CoreTest.h"

namespace {

using namespace qvn::test;
using namespace qvn::platform::vehicle;

class PropertyCacheTest : public CoreTest {
protected:
    PropertyCacheTest() { startCore(); }
};

TEST_F(PropertyCacheTest, TypedGettersAreClosedUntilThereIsASubscription) {
    core->dispatchSingal(intValue(0x21400E20, 1), PROPERTY_TYPE_INT32);
    std::vector<int> integers;
    EXPECT_FALSE(core->getInt32Property(0x21400E20, integers));
    EXPECT_TRUE(core->subscribe(nullptr, {}, nullptr));
    EXPECT_FALSE(core->getInt32Property(0x21400E20, integers));

    // Any identifier opens them for all.
    subscribe({0x12345678});
    EXPECT_TRUE(core->getInt32Property(0x21400E20, integers));
    EXPECT_EQ(integers, std::vector<int>{1});
    core->unsubscribe(nullptr, {});
    EXPECT_FALSE(core->getInt32Property(0x21400E20, integers));
}

TEST_F(PropertyCacheTest, GetPropValueNeedsNoSubscriptionAndNoValue) {
    VehiclePropValue value = intValue(1, 9);
    EXPECT_TRUE(core->getPropValue(0x21600E24, &value));
    EXPECT_EQ(value.timestamp, 0);
    EXPECT_EQ(value.areaId, 0x01000000);
    EXPECT_EQ(value.prop, 0x21600E24);
    EXPECT_EQ(value.status, 0);
    EXPECT_TRUE(value.value.int32Values.empty());
    EXPECT_FALSE(core->getPropValue(0x12345678, &value));
}

TEST_F(PropertyCacheTest, GetPropertyTypeFollowsTheTableAndThenTheValues) {
    EXPECT_EQ(core->getPropertyType(0x21600E24), PROPERTY_TYPE_FLOAT);
    EXPECT_EQ(core->getPropertyType(0x21603062), PROPERTY_TYPE_INT32);
    EXPECT_EQ(core->getPropertyType(0x12345678), PROPERTY_TYPE_UNKNOWN);
    core->dispatchSingal(intValue(0x21600E24, 1), PROPERTY_TYPE_INT64);
    EXPECT_EQ(core->getPropertyType(0x21600E24), PROPERTY_TYPE_INT64);
}

TEST_F(PropertyCacheTest, EachTypedGetterReadsItsOwnPayload) {
    subscribe({1});
    VehiclePropValue value;
    value.prop = 0x21400E20;
    value.value.int32Values = {0, 7};
    value.value.int64Values = {1L << 40};
    value.value.floatValues = {1.5f, 2.5f};
    value.value.bytes = {8, 9};
    value.value.stringValue = "text";
    core->dispatchSingal(value, PROPERTY_TYPE_BYTES);

    bool yes = true;
    std::vector<int> integers;
    std::vector<long> longs;
    std::vector<float> floats;
    std::vector<unsigned char> bytes;
    std::string text;
    EXPECT_TRUE(core->getBoolProperty(0x21400E20, yes));
    EXPECT_FALSE(yes);
    EXPECT_TRUE(core->getInt32Property(0x21400E20, integers));
    EXPECT_EQ(integers, (std::vector<int>{0, 7}));
    EXPECT_TRUE(core->getInt64Property(0x21400E20, longs));
    EXPECT_EQ(longs, std::vector<long>{1L << 40});
    EXPECT_TRUE(core->getFloatProperty(0x21400E20, floats));
    EXPECT_EQ(floats, (std::vector<float>{1.5f, 2.5f}));
    EXPECT_TRUE(core->getByteProperty(0x21400E20, bytes));
    EXPECT_EQ(bytes, (std::vector<unsigned char>{8, 9}));
    EXPECT_TRUE(core->getStringProperty(0x21400E20, text));
    EXPECT_EQ(text, "text");

    core->dispatchSingal(intValue(0x21400E20, -1), PROPERTY_TYPE_INT32);
    EXPECT_TRUE(core->getBoolProperty(0x21400E20, yes));
    EXPECT_TRUE(yes);
    EXPECT_FALSE(core->getInt64Property(0x21400E20, longs));
    EXPECT_FALSE(core->getFloatProperty(0x21400E20, floats));
    EXPECT_FALSE(core->getByteProperty(0x21400E20, bytes));
    EXPECT_FALSE(core->getStringProperty(0x21400E20, text));
}

TEST_F(PropertyCacheTest, TypedGettersSkipRecordsWithoutTheirPayload) {
    subscribe({1});
    core->cache()[65].propValue.value.int32Values = {5};  // the second of five records of one property
    std::vector<int> integers;
    EXPECT_TRUE(core->getInt32Property(0x11410A10, integers));
    EXPECT_EQ(integers, std::vector<int>{5});
    VehiclePropValue first;
    EXPECT_TRUE(core->getPropValue(0x11410A10, &first));
    EXPECT_TRUE(first.value.int32Values.empty());
    EXPECT_FALSE(core->getInt32Property(0x12345678, integers));
}

}  // namespace
