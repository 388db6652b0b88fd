#include "can-service-sim/can/CanDecoder.h"

#include <gtest/gtest.h>

#include <sstream>

#include "dbc/Reader.h"

namespace qvn::tools {
namespace {

constexpr std::uint32_t kSpeedCode = 0x01384CD0;
constexpr std::uint32_t kSpeedMessage = 0x01370000;

dbc::Database database(const std::string& text) {
    std::istringstream input(text);
    return dbc::readDatabase(input, "a.dbc");
}

const char kText[] =
    "BO_ 577 Brakes: 8 ESP\n"
    " SG_ ESP_FD2_VehSpd : 7|16@0+ (0.1,0) [0|0] \"km/h\" HUT\n"
    " SG_ QVN_GET_BCM1_DrvDoorSts : 16|8@1+ (0.1,-0.7) [0|0] \"\" HUT\n"
    " SG_ Counter : 24|4@1+ (1,0) [0|0] \"\" HUT\n"
    "BO_ 2147484225 Extended: 8 ESP\n SG_ Other : 0|8@1+ (1,0) [0|0] \"\" HUT\n"
    "BO_ 578 Quick: 8 ESP\n SG_ CSA2_SteerWheelAng : 0|8@1- (1,0) [0|0] \"\" HUT\n"
    "BA_ \"GenMsgCycleTime\" BO_ 577 200;\nBA_ \"GenMsgCycleTime\" BO_ 578 5;\n";

TEST(CanDecoder, TurnsTheFramesOfADatabaseIntoTheSchemasSignals) {
    CanDecoder decoder(database(kText));
    EXPECT_EQ(decoder.messages(), 3U);
    EXPECT_EQ(decoder.signals(), 5U);
    EXPECT_EQ(decoder.knownSignals(), 3U);
    EXPECT_EQ(decoder.unknownSignals(),
              (std::vector<std::string>{"BO_ 577 Brakes: Counter", "BO_ 577 (extended) Extended: Other"}));
    EXPECT_FALSE(decoder.knows({577, true, ""}));
    ASSERT_TRUE(decoder.knows({577, false, ""}));

    const CanFrame frame{577, false, std::string("\0\x2D\x11\0", 4)};
    const DecodedFrame decoded = decoder.decode(frame);
    EXPECT_EQ(decoded.messages, (std::vector<std::uint32_t>{kSpeedMessage, 0x03190000}));
    EXPECT_EQ(decoded.period, 0.2);
    ASSERT_EQ(decoded.values.size(), 2U);
    EXPECT_EQ(decoded.values[0].code, kSpeedCode);
    EXPECT_EQ(decoded.values[0].raw, std::string("\0\x50", 2)) << "4.5 km/h in the schema's own steps";
    EXPECT_EQ(decoded.values[1].raw, std::string("\1")) << "17 * 0.1 - 0.7 is not quite one";
    EXPECT_TRUE(decoded.values[0].changed);
    EXPECT_FALSE(decoder.decode(frame).values[0].changed);
    EXPECT_EQ(decoder.decode({578, false, std::string(1, '\0')}).period, 0.02) << "five of them give the bus 100 ms";
}

TEST(CanDecoder, ASignalThatCannotBeShownIsToldOnceAndTheOthersGoOn) {
    CanDecoder decoder(database(kText));
    const DecodedFrame high = decoder.decode({577, false, "\xFF\xFF\x07"});
    EXPECT_EQ(high.complaints,
              std::vector<std::string>{"signal ESP_FD2_VehSpd of the CAN bus is left out: value 6553.5 does not fit; "
                                       "expected a number from 0 to 3686.344; this is told once"});
    ASSERT_EQ(high.values.size(), 1U);
    EXPECT_FALSE(high.messages.empty()) << "the message was received all the same";
    EXPECT_TRUE(decoder.decode({577, false, "\xFF\xFF\x07"}).complaints.empty());
    EXPECT_EQ(decoder.decode({578, false, "\xFF"}).complaints.size(), 1U) << "negative";
    const DecodedFrame cut = CanDecoder(database(kText)).decode({577, false, "\1"});
    ASSERT_EQ(cut.complaints.size(), 2U);
    EXPECT_NE(cut.complaints[0].find("a frame of 1 bytes is too short for it"), std::string::npos) << cut.complaints[0];
}

}  // namespace
}  // namespace qvn::tools
