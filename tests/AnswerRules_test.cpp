#include "can-service-sim/AnswerRules.h"

#include <gtest/gtest.h>

#include <sstream>

#include "support/ErrorOf.h"

namespace qvn::tools {
namespace {

constexpr std::uint32_t kCarModelCommand = 0x004A07F0;
constexpr std::uint32_t kCarModelStatus = 0x02740AB0;

AnswerRules rulesOf(const std::string& text) {
    std::istringstream input(text);
    return readRules(input, "my.rules");
}

TEST(AnswerRules, ReadsTheForms) {
    const AnswerRules rules = rulesOf(
        "\xEF\xBB\xBF# comment\n"
        "HUT6_CarMdlDispCmd -> HAP_FD2_CarMdlDispSts\n"
        "QVN_SET_DMS_FD1_HeadYawAng=-75 -> ESP_FD2_VehSpd=4.5 after 0.2  # remark\n");
    ASSERT_EQ(rules.size(), 2U);
    EXPECT_EQ(rules[0].setCode, kCarModelCommand);
    EXPECT_EQ(rules[0].answerCode, kCarModelStatus);
    EXPECT_FALSE(rules[0].setValue);
    EXPECT_FALSE(rules[0].answerValue);
    EXPECT_EQ(rules[0].delay, 0.0);
    EXPECT_EQ(rules[1].setValue, -75);
    EXPECT_EQ(rules[1].answerValue, 4.5);
    EXPECT_EQ(rules[1].delay, 0.2);
}

TEST(AnswerRules, NamesThePositionOfWhatIsWrong) {
    const std::string form = "; expected SET[=VALUE] -> SIGNAL[=VALUE] [after SECONDS]";
    const std::pair<const char*, std::string> cases[] = {
        {"HUT6_CarMdlDispCmd -> ", "'HUT6_CarMdlDispCmd -> ' is not a rule" + form},
        {"HUT6_CarMdlDispCmd -> HUT6_CarMdlDispCmd", "unknown received signal 'HUT6_CarMdlDispCmd'"},
        {"HUT6_CarMdlDispCmd=256 -> HAP_FD2_CarMdlDispSts",
         "value 256 cannot be set; expected a whole number from 0 to 255"},
        {"HUT6_CarMdlDispCmd -> HAP_FD2_CarMdlDispSts=-1",
         "value -1 does not fit; expected a whole number from 0 to 255"},
        {"HUT6_CarMdlDispCmd -> HAP_FD2_CarMdlDispSts in 3", "'in' is not expected here" + form},
        {"HUT6_CarMdlDispCmd -> HAP_FD2_CarMdlDispSts after", "'' is not a number; expected a delay in seconds"},
        {"0x01384CD0 -> HAP_FD2_CarMdlDispSts", "'0x01384CD0' is not a signal that can be set"},
    };
    for (const auto& [line, error] : cases) {
        EXPECT_EQ(errorOf([&line = line] { rulesOf("\n" + std::string(line)); }), "my.rules:2: " + error);
    }
}

TEST(AnswerRules, AValueOnTheLeftLimitsTheRule) {
    const AnswerRules rules = rulesOf(
        "HUT6_MODChgReq=1 -> HAP_FD2_MOD_WorkSts=3\n"
        "HUT6_MODChgReq -> HAP_FD2_MOD_AlarmSts\n");
    EXPECT_EQ(matchingRules(rules, 0x004A07D0, 1).size(), 2U);
    EXPECT_EQ(matchingRules(rules, 0x004A07D0, 2).size(), 1U);
    EXPECT_EQ(matchingRules(rules, kCarModelCommand, 1).size(), 0U);
}

TEST(AnswerRules, TheUsersRulesReplaceTheBuiltInOnesOfTheSameSignal) {
    AnswerRules rules = parkingRules();
    ASSERT_EQ(matchingRules(rules, kCarModelCommand, 1).size(), 1U);
    const std::size_t before = rules.size();
    extendRules(rules, rulesOf("HUT6_CarMdlDispCmd -> HAP_FD2_CarMdlDispSts=7\nHUT34_TimeMod -> PLG_1_PLG_Sts\n"));
    EXPECT_EQ(rules.size(), before + 1);
    ASSERT_EQ(matchingRules(rules, kCarModelCommand, 1).size(), 1U);
    EXPECT_EQ(matchingRules(rules, kCarModelCommand, 1)[0].answerValue, 7.0);
}

}  // namespace
}  // namespace qvn::tools
