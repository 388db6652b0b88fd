#include "common/PhysicalValue.h"

#include <gtest/gtest.h>

#include <string>

#include "common/BadInput.h"

namespace qvn::tools {
namespace {

using tables::DecodingRule;
using tables::SetEncoding;
using tables::SetRow;

std::string bytes(std::initializer_list<int> values) {
    std::string raw;
    for (const int value : values) {
        raw += static_cast<char>(value);
    }
    return raw;
}

TEST(PhysicalValue, EncodesByTheRuleOfTheSignal) {
    struct Case {
        DecodingRule rule;
        double value;
        std::string raw;
        const char* decoded;
    };
    const Case cases[] = {
        {DecodingRule::Byte, 0, bytes({0}), "0"},
        {DecodingRule::Byte, 255, bytes({0xFF}), "255"},
        {DecodingRule::Switch, 1, bytes({1}), "1"},
        {DecodingRule::Word, 258, bytes({1, 2}), "258"},
        {DecodingRule::Word, 65535, bytes({0xFF, 0xFF}), "65535"},
        {DecodingRule::VehicleSpeed, 4.5, bytes({0, 80}), "4.5"},
        {DecodingRule::VehicleSpeed, 112.5, bytes({7, 0xD0}), "112.5"},
        {DecodingRule::VehicleSpeed, 5, bytes({0, 89}), "5.00625"},  // the nearest step
        {DecodingRule::VehicleSpeed, 3686.34375, bytes({0xFF, 0xFF}), "3686.344"},
        {DecodingRule::VehicleSpeed, 3686.344, bytes({0xFF, 0xFF}), "3686.344"},  // the limit as it is shown
        {DecodingRule::WheelSpeed, 3686.344, bytes({0xFF, 0xFF}), "3686"},
        {DecodingRule::SteeringAngle, 30, bytes({1, 0x2C}), "30"},
        {DecodingRule::SteeringAngle, 180.5, bytes({7, 0x0D}), "180.5"},
        {DecodingRule::SteeringAngle, 6553.5, bytes({0xFF, 0xFF}), "6553.5"},
        {DecodingRule::WheelSpeed, 0, bytes({0, 0}), "0"},
        {DecodingRule::WheelSpeed, 1, bytes({0, 18}), "1"},
        {DecodingRule::WheelSpeed, 4, bytes({0, 72}), "4"},  // 71 is nearer, but would read 3
        {DecodingRule::WheelSpeed, 9, bytes({0, 160}), "9"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(ruleText(c.rule)) + " " + std::to_string(c.value));
        EXPECT_EQ(encodePhysical(c.rule, c.value), c.raw);
        EXPECT_EQ(decodedText(c.rule, c.raw), c.decoded);
    }
}

TEST(PhysicalValue, EveryWholeWheelSpeedReadsBackAsItself) {
    for (int speed = 0; speed <= 3686; ++speed) {
        const std::string raw = encodePhysical(DecodingRule::WheelSpeed, speed);
        ASSERT_EQ(decodedText(DecodingRule::WheelSpeed, raw), std::to_string(speed));
    }
}

TEST(PhysicalValue, RefusesWhatDoesNotFitAndTellsTheRange) {
    struct Case {
        DecodingRule rule;
        double value;
        const char* error;
    };
    const Case cases[] = {
        {DecodingRule::Byte, 256, "value 256 does not fit; expected a whole number from 0 to 255"},
        {DecodingRule::Byte, -1, "value -1 does not fit; expected a whole number from 0 to 255"},
        {DecodingRule::Byte, 1.5, "value 1.5 does not fit; expected a whole number from 0 to 255"},
        {DecodingRule::Word, 65536, "value 65536 does not fit; expected a whole number from 0 to 65535"},
        {DecodingRule::SteeringAngle, -0.1, "value -0.1 does not fit; expected a number from 0 to 6553.5"},
        {DecodingRule::VehicleSpeed, 3687, "value 3687 does not fit; expected a number from 0 to 3686.344"},
    };
    for (const Case& c : cases) {
        try {
            encodePhysical(c.rule, c.value);
            ADD_FAILURE() << "accepted " << c.value;
        } catch (const BadInput& error) {
            EXPECT_STREQ(error.what(), c.error);
        }
    }
}

TEST(PhysicalValue, ShortBytesAreNotDecoded) {
    EXPECT_EQ(decodedText(DecodingRule::Byte, ""), "(too short)");
    EXPECT_EQ(decodedText(DecodingRule::Word, bytes({1})), "(too short)");
}

TEST(PhysicalValue, ReadsBackWhatAClientSet) {
    struct Case {
        SetRow row;
        std::string raw;
        std::optional<int> value;
    };
    const SetRow plain{1, SetEncoding::U8, 0, "", 0};
    const SetRow angle{2, SetEncoding::U8Plus, 75, "", 0};
    const SetRow word{3, SetEncoding::U16Be, 0, "", 0};
    const SetRow position{4, SetEncoding::U16BePlus, 500, "", 0};
    const Case cases[] = {
        {plain, bytes({0xFF}), 255},   {angle, bytes({0}), -75},        {angle, bytes({0xFB}), 176},
        {word, bytes({1, 0x2C}), 300}, {position, bytes({0, 0}), -500}, {position, bytes({2, 0x58}), 100},
        {plain, bytes({1, 2}), {}},    {word, bytes({1}), {}},          {plain, "", {}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(decodeSet(c.row, c.raw), c.value) << "row " << c.row.code;
    }
    EXPECT_EQ(setRange(angle).low, -75);
    EXPECT_EQ(setRange(angle).high, 180);
    EXPECT_EQ(setRange(position).high, 65035);
}

TEST(ParseNumber, TakesDecimalAndHexadecimalOnly) {
    EXPECT_EQ(parseNumber("4.5", "a value"), 4.5);
    EXPECT_EQ(parseNumber("-75", "a value"), -75.0);
    EXPECT_EQ(parseNumber("0x1F", "a value"), 31.0);
    for (const char* const text : {"", " 1", "1 ", "4,5", "0x", "0x100000000", "nan", "inf", "1e999", "five"}) {
        EXPECT_THROW(parseNumber(text, "a value"), BadInput) << "'" << text << "'";
    }
}

}  // namespace
}  // namespace qvn::tools
