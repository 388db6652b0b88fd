#include "desk/SignalNotes.h"

#include <gtest/gtest.h>

#include <sstream>

#include "desk/DatabaseNotes.h"
#include "desk/SignalNames.h"
#include "support/ErrorOf.h"

namespace qvn::tools {
namespace {

void add(const std::string& text) {
    std::istringstream input(text);
    SignalNotes::instance().add(input, "my.json");
}

TEST(SignalNotes, NameValuesAndUnits) {
    const std::uint32_t lever = findCode(NameKind::Received, "DCT5_TGS_LEVER");
    const std::uint32_t speed = findCode(NameKind::Received, "ESP_FD2_VehSpd");
    const std::uint32_t display = findCode(NameKind::Settable, "HUT6_CarMdlDispCmd");
    EXPECT_EQ(valueWithNote(lever, 2), "2 R");
    EXPECT_EQ(valueWithNote(lever, 3), "3");
    EXPECT_EQ(valueWithNote(speed, 4.5), "4.5 km/h");
    EXPECT_EQ(parseValue(lever, "R", "a value"), 2);
    EXPECT_EQ(parseValue(lever, "3", "a value"), 3);
    EXPECT_EQ(errorOf([&] { parseValue(lever, "X", "a value"); }),
              "'X' is not a number; expected a value or one of: P, R");

    add(R"({"DCT5_TGS_LEVER": {"values": {"1": "N", "2": "reverse"}}, "ESP_FD2_VehSpd": {"unit": "mph"},
            "HUT6_CarMdlDispCmd": {"description": "car model", "values": {"1": "on"}}})");
    EXPECT_EQ(valueWithNote(lever, 0) + ", " + valueWithNote(lever, 1) + ", " + valueWithNote(lever, 2),
              "0 P, 1 N, 2 reverse");
    EXPECT_EQ(valueWithNote(speed, 1), "1 mph");
    EXPECT_EQ(SignalNotes::instance().of(display).description, "car model");
    EXPECT_EQ(parseValue(display, "on", "a value"), 1);
}

TEST(SignalNotes, AFileThatIsWrongAddsNothing) {
    const std::pair<const char*, const char*> cases[] = {
        {R"({"ESP_FD2_VehSpd")", "my.json: is no JSON: error at line 1, column 18"},
        {R"({"ESP_FD2_VehSpd": {"range": [0, 1e999]}})", "my.json: is no JSON: error number overflow parsing '1e999'"},
        {"[]", "my.json: expected {\"SIGNAL\""},
        {R"({"ESP_FD2_VehSpeed": {}})", "my.json: ESP_FD2_VehSpeed: unknown signal 'ESP_FD2_VehSpeed'; did you mean"},
        {R"({"ESP_FD2_VehSpd": 4})", "my.json: ESP_FD2_VehSpd: 4 is not a note"},
        {R"({"ESP_FD2_VehSpd": {"units": "mph"}})", "my.json: ESP_FD2_VehSpd: 'units' is not known here"},
        {R"({"ESP_FD2_VehSpd": {"unit": 4}})", "my.json: ESP_FD2_VehSpd: the unit is 4; expected a text"},
        {R"({"ESP_FD2_VehSpd": {"values": {"one": "A"}}})", "my.json: ESP_FD2_VehSpd: 'one' is not a whole number"},
        {R"({"ESP_FD2_VehSpd": {"values": {"1": "A B"}}})", "my.json: ESP_FD2_VehSpd: 'A B' cannot name a value"},
        {R"({"ESP_FD2_VehSpd": {"values": {"1": "2nd"}}})", "my.json: ESP_FD2_VehSpd: '2nd' cannot name a value"},
        {R"({"BCM1_TrunkSts": {"unit": "x"}, "ESP_FD2_VehSpd": {"values": {"1": ""}}})", "my.json: ESP_FD2_VehSpd: ''"},
    };
    const std::string deep(200'000, '[');
    EXPECT_EQ(errorOf([&] { add(deep); }), "my.json: is no JSON: it nests more than 100 levels deep");
    EXPECT_EQ(errorOf([&] { add("{\"ESP_FD2_VehSpd\": " + deep + std::string(deep.size(), ']') + "}"); }),
              "my.json: is no JSON: it nests more than 100 levels deep");
    for (const auto& [text, error] : cases) {
        EXPECT_EQ(errorOf([&text = text] { add(text); }).find(error), 0U) << errorOf([&text = text] { add(text); });
    }
    EXPECT_EQ(SignalNotes::instance().of(findCode(NameKind::Received, "BCM1_TrunkSts")).unit, "");
}

TEST(SignalNotes, ComeFromASignalDatabaseToo) {
    dbc::Signal trunk;
    trunk.name = "BCM1_TrunkSts";
    trunk.unit = "\xB0";
    trunk.factor = 0.5;
    trunk.values = {{-2, "never"}, {0, "closed"}, {1, "half"}, {2, "Not available"}, {4, "2nd"}};
    dbc::Signal speed;
    speed.name = "QVN_GET_ESP_FD2_VehSpd";
    speed.unit = "m/s\xC2\xB2 \xE2";
    dbc::Message message;
    message.signals = {trunk, speed, dbc::Signal{}};
    addNotes(SignalNotes::instance(), dbc::Database{{message}, {}});
    const std::uint32_t code = findCode(NameKind::Received, "BCM1_TrunkSts");
    EXPECT_EQ(valueWithNote(code, 0) + ", " + valueWithNote(code, 1) + ", " + valueWithNote(code, 2),
              "0 deg closed, 1 deg Not_available, 2 deg _2nd");
    EXPECT_EQ(valueName(code, -1), "") << "of an unsigned signal";
    EXPECT_EQ(SignalNotes::instance().of(code).range, std::nullopt) << "[0|0] is none";
    EXPECT_EQ(valueWithNote(findCode(NameKind::Received, "ESP_FD2_VehSpd"), 1), "1 m/s^2 ?");
}

}  // namespace
}  // namespace qvn::tools
