#include "canservice/ValueEncoding.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace qvn::canservice;
using qvn::tables::SetEncoding;

TEST(ValueEncoding, IntegersAreCutToSixteenBitsBeforeTheOffset) {
    EXPECT_EQ(quantity(5, 0), 5u);
    EXPECT_EQ(quantity(-1, 0), 0xFFFFu);
    EXPECT_EQ(quantity(-75, 75), 0x10000u);
    EXPECT_EQ(quantity(std::numeric_limits<int>::min(), 0), 0u);
    EXPECT_EQ(quantity(0x12345L, 0), 0x2345u);
    EXPECT_EQ(quantity(std::numeric_limits<long>::max(), 500), 0xFFFFu + 500u);
    EXPECT_EQ(quantity(static_cast<unsigned char>(200), 75), 275u);
}

TEST(ValueEncoding, FloatsAreCutTowardZeroAndSaturate) {
    const float infinity = std::numeric_limits<float>::infinity();
    const struct {
        float value;
        int offset;
        std::uint32_t expected;
    } cases[] = {
        {0.0f, 0, 0},
        {-0.0f, 0, 0},
        {3.9f, 0, 3},
        {0.99f, 0, 0},
        {-0.5f, 0, 0},
        {-80.0f, 75, 0},
        {-75.0f, 75, 0},
        {-74.5f, 75, 0},
        {-74.0f, 75, 1},
        {-500.5f, 500, 0},
        {100.0f, 500, 600},
        {4294967040.0f, 0, 4294967040u},
        {4294967296.0f, 0, 0xFFFFFFFF},
        {1e30f, 75, 0xFFFFFFFF},
        {infinity, 0, 0xFFFFFFFF},
        {-infinity, 500, 0},
        {std::nanf(""), 90, 0},
        {-std::nanf(""), 0, 0},
        {std::numeric_limits<float>::lowest(), 0, 0},
    };
    for (const auto& [value, offset, expected] : cases) {
        EXPECT_EQ(quantity(value, offset), expected) << value << " + " << offset;
    }
}

TEST(ValueEncoding, BytesAreTheLowBitsHighestFirst) {
    const struct {
        SetEncoding encoding;
        std::uint32_t quantity;
        std::string expected;
    } cases[] = {
        {SetEncoding::U8, 0x05, std::string("\x05", 1)},
        {SetEncoding::U8, 0x2345, std::string("\x45", 1)},
        {SetEncoding::U8, 0xFFFFFFFF, std::string("\xFF", 1)},
        {SetEncoding::U8Plus, 0x10000, std::string("\x00", 1)},
        {SetEncoding::U16Be, 300, std::string("\x01\x2C", 2)},
        {SetEncoding::U16Be, 0xFFFFFFFF, std::string("\xFF\xFF", 2)},
        {SetEncoding::U16BePlus, 0x10000, std::string("\x00\x00", 2)},
        {SetEncoding::U16BePlus, 600, std::string("\x02\x58", 2)},
    };
    for (const auto& [encoding, quantity, expected] : cases) {
        EXPECT_EQ(encode(encoding, quantity), expected) << quantity;
    }
}

}  // namespace
