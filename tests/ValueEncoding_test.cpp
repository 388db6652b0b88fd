#include "canservice/ValueEncoding.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "support/Fingerprint.h"

namespace {

using namespace qvn::canservice;

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

TEST(ValueEncoding, FloatsOfAllKindsHaveTheSameResultOnEveryProcessor) {
    qvn::test::Fingerprint fingerprint;
    constexpr std::uint64_t kStep = 65521;  // through the bit patterns of all floats, infinities and NaNs among them
    for (std::uint64_t pattern = 0; pattern <= 0xFFFFFFFF; pattern += kStep) {
        const auto bits = static_cast<std::uint32_t>(pattern);
        float value = 0.0f;
        std::memcpy(&value, &bits, sizeof value);
        for (const int offset : {0, 45, 75, 90, 500}) {
            fingerprint.add(quantity(value, offset));
        }
    }
    EXPECT_EQ(fingerprint.value(), 13560686064874049823u);
}

}  // namespace
