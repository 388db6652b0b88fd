#include "desk/PhysicalValue.h"

#include <gtest/gtest.h>

#include <string>

#include "desk/Number.h"
#include "support/ErrorOf.h"

namespace qvn::tools {
namespace {

using tables::DecodingRow;
using tables::SetRow;
using tables::ValueKind;

const DecodingRow kByte{1, ValueKind::Integer, 1, 1.0, "", 0, nullptr};
const DecodingRow kWord{2, ValueKind::Integer, 2, 1.0, "", 0, nullptr};
const DecodingRow kSwitch{3, ValueKind::Switch, 1, 1.0, "", 1003, nullptr};
const DecodingRow kSpeed{4, ValueKind::Float, 2, 0.05625, "km/h", 0, nullptr};
const DecodingRow kAngle{5, ValueKind::Float, 2, 0.1, "deg", 0, nullptr};
const DecodingRow kWheelSpeed{6, ValueKind::Integer, 2, 0.05625, "km/h", 0, nullptr};
const DecodingRow kHalves{7, ValueKind::Float, 1, 0.5, "", 0, nullptr};
const DecodingRow kTens{8, ValueKind::Integer, 1, 10.0, "", 0, nullptr};

std::string bytes(std::initializer_list<int> values) {
    std::string raw;
    for (const int value : values) {
        raw += static_cast<char>(value);
    }
    return raw;
}

TEST(PhysicalValue, EncodesByTheRuleOfTheSignal) {
    const struct {
        DecodingRow row;
        double value;
        std::string raw;
        const char* decoded;
    } cases[] = {
        {kByte, 0, bytes({0}), "0"},
        {kByte, 255, bytes({0xFF}), "255"},
        {kSwitch, 1, bytes({1}), "1"},
        {kWord, 258, bytes({1, 2}), "258"},
        {kWord, 65535, bytes({0xFF, 0xFF}), "65535"},
        {kSpeed, 4.5, bytes({0, 80}), "4.5"},
        {kSpeed, 112.5, bytes({7, 0xD0}), "112.5"},
        {kSpeed, 5, bytes({0, 89}), "5.00625"},  // the nearest step
        {kSpeed, 3686.34375, bytes({0xFF, 0xFF}), "3686.344"},
        {kSpeed, 3686.344, bytes({0xFF, 0xFF}), "3686.344"},  // the limit as it is shown
        {kWheelSpeed, 3686.344, bytes({0xFF, 0xFF}), "3686"},
        {kAngle, 30, bytes({1, 0x2C}), "30"},
        {kAngle, 180.5, bytes({7, 0x0D}), "180.5"},
        {kAngle, 6553.5, bytes({0xFF, 0xFF}), "6553.5"},
        {kWheelSpeed, 0, bytes({0, 0}), "0"},
        {kWheelSpeed, 1, bytes({0, 18}), "1"},
        {kWheelSpeed, 4, bytes({0, 72}), "4"},  // 71 is nearer, but would read 3
        {kWheelSpeed, 9, bytes({0, 160}), "9"},
        {kHalves, 127.5, bytes({0xFF}), "127.5"},
        {kTens, 30, bytes({3}), "30"},
        {kTens, 2550, bytes({0xFF}), "2550"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(kindText(c.row)) + " " + std::to_string(c.value));
        EXPECT_EQ(encodePhysical(c.row, c.value), c.raw);
        EXPECT_EQ(decodedText(c.row, c.raw), c.decoded);
    }
}

TEST(PhysicalValue, EveryWholeWheelSpeedReadsBackAsItself) {
    for (int speed = 0; speed <= 3686; ++speed) {
        ASSERT_EQ(decodedText(kWheelSpeed, encodePhysical(kWheelSpeed, speed)), std::to_string(speed));
    }
}

TEST(PhysicalValue, RefusesWhatDoesNotFitAndTellsTheRange) {
    const struct {
        DecodingRow row;
        double value;
        const char* error;
    } cases[] = {
        {kByte, 256, "value 256 does not fit; expected a whole number from 0 to 255"},
        {kByte, -1, "value -1 does not fit; expected a whole number from 0 to 255"},
        {kByte, 1.5, "value 1.5 does not fit; expected a whole number from 0 to 255"},
        {kWord, 65536, "value 65536 does not fit; expected a whole number from 0 to 65535"},
        {kAngle, -0.1, "value -0.1 does not fit; expected a number from 0 to 6553.5"},
        {kSpeed, 3687, "value 3687 does not fit; expected a number from 0 to 3686.344"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(errorOf([&] { encodePhysical(c.row, c.value); }), c.error);
    }
}

TEST(PhysicalValue, ShortBytesAreNotDecoded) {
    EXPECT_EQ(decodedText(kByte, ""), "(too short)");
    EXPECT_EQ(decodedText(kWord, bytes({1})), "(too short)");
}

TEST(PhysicalValue, ReadsBackWhatAClientSet) {
    const SetRow plain{1, 1, 0, "", 0};
    const SetRow angle{2, 1, 75, "", 0};
    const SetRow word{3, 2, 0, "", 0};
    const SetRow position{4, 2, 500, "", 0};
    const struct {
        SetRow row;
        std::string raw;
        std::optional<int> value;
    } cases[] = {
        {plain, bytes({0xFF}), 255},   {angle, bytes({0}), -75},        {angle, bytes({0xFB}), 176},
        {word, bytes({1, 0x2C}), 300}, {position, bytes({0, 0}), -500}, {position, bytes({2, 0x58}), 100},
        {plain, bytes({1, 2}), {}},    {word, bytes({1}), {}},          {plain, "", {}},
    };
    for (const auto& c : cases) {
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
