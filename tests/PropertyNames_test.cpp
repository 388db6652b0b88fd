#include "desk/PropertyNames.h"

#include <gtest/gtest.h>

#include "desk/SignalNames.h"
#include "support/ErrorOf.h"

namespace qvn::tools {
namespace {

TEST(PropertyNames, NamesAPropertyByIdentifierAndBySignal) {
    const std::pair<const char*, std::uint32_t> cases[] = {
        {"0x21600E1F", 0x21600E1F},
        {"0x21600e1f", 0x21600E1F},
        {"ESP_FD2_VehSpd", 0x21600E1F},
        {"QVN_GET_ESP_FD2_VehSpd", 0x21600E1F},
        {"HUT6_CarMdlDispCmd", 0x21403033},
        {"QVN_SET_HUT6_CarMdlDispCmd", 0x21403033},
        {"CSA3_SeekUpSwtSts", 0x11410A10},
        {"QVN_GET_CSA3_EnterSwtSts_Mmed", 0x11410A10},
        {"CSA3_*", 0x11410A10},
        {"BCM1_DrvDoorSts", 0x21400E20},  // its list entry has trailing blanks
    };
    for (const auto& [text, id] : cases) {
        EXPECT_EQ(propertyNamed(text).id, id) << text;
    }
}

TEST(PropertyNames, AnUnknownNameSuggestsTheClosest) {
    const std::pair<const char*, const char*> cases[] = {
        {"VehSpd", "unknown property 'VehSpd'; did you mean ESP_FD2_VehSpd or ESP_FD2_VehSpdVld?"},
        {"bcm1_drvdoorsts", "unknown property 'bcm1_drvdoorsts'; did you mean BCM1_DrvDoorSts?"},
        {"QVN_GET_PLG_1_PLG_St", "unknown property 'QVN_GET_PLG_1_PLG_St'; did you mean PLG_1_PLG_Sts?"},
        {"completely_different", "unknown property 'completely_different'"},
        {"", "unknown property ''"},
        {"0x00000012", "no property has the identifier 0x00000012; 'vehiclectl list' shows them all"},
    };
    for (const auto& [text, error] : cases) {
        EXPECT_EQ(errorOf([&text = text] { propertyNamed(text); }), error);
    }
}

TEST(PropertyNames, TellsWhatFeedsAPropertyAndWhatASetSends) {
    EXPECT_EQ(properties().size(), 235U);  // 241 rows, of which six repeat a property

    const PropertyInfo& speed = propertyNamed("ESP_FD2_VehSpd");
    EXPECT_EQ(speed.name, "ESP_FD2_VehSpd");
    EXPECT_EQ(speed.type, platform::vehicle::PROPERTY_TYPE_FLOAT);
    EXPECT_EQ(speed.received, std::vector<std::uint32_t>{0x01384CD0});
    EXPECT_TRUE(speed.settable.empty());

    const PropertyInfo& calibration = propertyNamed("HUT6_LaneCalActvtCmd");
    EXPECT_EQ(calibration.settable, std::vector<std::uint32_t>{0x004A0550});
    EXPECT_TRUE(calibration.received.empty());

    const PropertyInfo& switches = propertyNamed("0x11410A10");
    EXPECT_EQ(switches.name, "CSA3_*");
    EXPECT_EQ(switches.received.size(), 5U);
    EXPECT_EQ(switchName(switches, 1002), "CSA3_SeekUpSwtSts");
    EXPECT_EQ(switchName(switches, 2004), "CSA3_EnterSwtSts_Mmed");
    EXPECT_EQ(switchName(switches, 7), "");
}

TEST(SignalNames, FindsCodesOfTheirKindOnly) {
    constexpr std::uint32_t kNone = 0;
    const struct {
        const char* name;
        std::uint32_t received;
        std::uint32_t message;
        std::uint32_t settable;
    } cases[] = {
        {"ESP_FD2_VehSpd", 0x01384CD0, kNone, kNone},       {"QVN_GET_ESP_FD2_VehSpd", 0x01384CD0, kNone, kNone},
        {"0x01384CD0", 0x01384CD0, 0x01384CD0, 0x01384CD0}, {"HAP_FD3", kNone, 0x02980000, kNone},
        {"HUT6_CarMdlDispCmd", kNone, kNone, 0x004A07F0},
    };
    for (const auto& c : cases) {
        const auto codeOf = [&](NameKind kind) {
            std::uint32_t code = kNone;
            errorOf([&] { code = findCode(kind, c.name); });
            return code;
        };
        EXPECT_EQ(codeOf(NameKind::Received), c.received) << c.name;
        EXPECT_EQ(codeOf(NameKind::Message), c.message) << c.name;
        EXPECT_EQ(codeOf(NameKind::Settable), c.settable) << c.name;
    }
}

TEST(SignalNames, TheMessageOfASignalIsNotReadFromItsCode) {
    EXPECT_EQ(messageOf(0x01384CD0), 0x01370000U);  // ESP_FD2_VehSpd lies beyond its frame's first 64 KiB
    EXPECT_EQ(messageOf(0x031902D0), 0x03190000U);
    EXPECT_EQ(messageOf(0x12345678), std::nullopt);
    EXPECT_EQ(signalName(0x01384CD0), "ESP_FD2_VehSpd");
    EXPECT_EQ(signalName(0x12345670), "0x12345670");
}

}  // namespace
}  // namespace qvn::tools
