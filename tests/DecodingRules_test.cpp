#include "tables/DecodingRules.h"

#include <gtest/gtest.h>

#include <map>

#include "tables/SortedByCode.h"

namespace {

using qvn::tables::DecodingRule;
using qvn::tables::findDecodingRule;

struct Sample {
    std::uint32_t code;
    DecodingRule rule;
    std::int32_t direction;
    const char* logFormat;
};

TEST(DecodingRules, Samples) {
    const Sample samples[] = {
        {0x00330260, DecodingRule::Byte, 0, "[%s][%d]T_Box_FD1_T_Box_AudioMuteReq value:%d"},
        {0x00A10210, DecodingRule::Byte, 0, "[%s][%d]CSA2_SteerWheelAngSign value:%d"},
        {0x00A10FF0, DecodingRule::SteeringAngle, 0, nullptr},
        {0x01384CD0, DecodingRule::VehicleSpeed, 0, "[%s][%d]ESP_FD2_VehSpd value:%f"},
        {0x015BA7C0, DecodingRule::Word, 0, "[%s][%d]HAP_FD1_APS_ESP_BrkDistance value:%d"},
        {0x015BA7C1, DecodingRule::Byte, 0, "[%s][%d]HAP_FD1_HAVP_WorkSts value:%d"},
        {0x020109F0, DecodingRule::Byte, 0, "[%s][%d]HCU_HP5_DrvModDisp_0x201 value:%d"},
        {0x02310CD0, DecodingRule::WheelSpeed, 0, nullptr},
        {0x02311CD0, DecodingRule::WheelSpeed, 0, nullptr},
        {0x02440560, DecodingRule::Switch, 1001, "[%s][%d]CSA3_AdjVolDwnSwtSts value:%d, direct:%d"},
        {0x024405E0, DecodingRule::Switch, 1000, "[%s][%d]CSA3_AdjVolUpSwtSts value:%d, direct:%d"},
        {0x024406E0, DecodingRule::Switch, 2004, "[%s][%d]CSA3_EnterSwtSts_Mmed value:%d, direct:%d"},
        {0x02440F60, DecodingRule::Switch, 1003, "[%s][%d]CSA3_SeekDwnSwtSts value:%d, direct:%d"},
        {0x02440FE0, DecodingRule::Switch, 1002, "[%s][%d]CSA3_SeekUpSwtSts value:%d, direct:%d"},
        {0x02460CD0, DecodingRule::WheelSpeed, 0, nullptr},
        {0x02461CD0, DecodingRule::WheelSpeed, 0, nullptr},
        {0x02746890, DecodingRule::Word, 0, "[%s][%d]HAP_FD2_AVM_3DAngSts value:%d"},
        {0x03192780, DecodingRule::Byte, 0, "[%s][%d]BCM1_BackgroundLightLvl value:%d"},
        {0x03450470, DecodingRule::Byte, 0, "[%s][%d]BCM3_LasHdLmpSts value:%d"},
    };
    for (const Sample& sample : samples) {
        SCOPED_TRACE(sample.code);
        const qvn::tables::DecodingRow* const row = findDecodingRule(sample.code);
        ASSERT_NE(row, nullptr);
        EXPECT_EQ(row->code, sample.code);
        EXPECT_EQ(row->rule, sample.rule);
        EXPECT_EQ(row->direction, sample.direction);
        EXPECT_STREQ(row->logFormat, sample.logFormat);
    }
}

TEST(DecodingRules, NumberOfSignalsOfEachRule) {
    std::map<DecodingRule, int> counts;
    for (const qvn::tables::DecodingRow& row : qvn::tables::kDecodingRules) {
        ++counts[row.rule];
    }
    EXPECT_EQ(counts, (std::map<DecodingRule, int>{{DecodingRule::Byte, 143},
                                                   {DecodingRule::Word, 2},
                                                   {DecodingRule::VehicleSpeed, 1},
                                                   {DecodingRule::SteeringAngle, 1},
                                                   {DecodingRule::WheelSpeed, 4},
                                                   {DecodingRule::Switch, 5}}));
}

TEST(DecodingRules, OtherCodesHaveNone) {
    for (const std::uint32_t code : {0u, 0x00330000u, 0x02440000u, 0x02440F61u, 0x004A0550u, 0xFFFFFFFFu}) {
        EXPECT_EQ(findDecodingRule(code), nullptr) << std::hex << code;
    }
}

struct Row {
    std::uint32_t code;
};

TEST(SortedByCode, TellsTheFirstRowOutOfOrder) {
    const Row sorted[] = {{1}, {2}, {0xFFFFFFFF}};
    const Row swapped[] = {{1}, {3}, {2}, {1}};
    const Row repeated[] = {{1}, {1}};
    EXPECT_EQ(qvn::tables::firstUnsortedRow(sorted), 3u);
    EXPECT_EQ(qvn::tables::firstUnsortedRow(swapped), 2u);
    EXPECT_EQ(qvn::tables::firstUnsortedRow(repeated), 1u);
}

}  // namespace
