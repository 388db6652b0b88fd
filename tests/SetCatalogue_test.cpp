#include "tables/SetCatalogue.h"

#include <gtest/gtest.h>

namespace {

using qvn::tables::findSetSignal;
using qvn::tables::SetEncoding;

struct Sample {
    std::uint32_t code;
    SetEncoding encoding;
    int offset;
    const char* logFormat;
    int line;
};

TEST(SetCatalogue, Samples) {
    const Sample samples[] = {
        {0x004A00F0, SetEncoding::U8, 0, "[%s][%d]HUT6_Guid_Ovl_Display_Cmd value:%d", 109},
        {0x004A0550, SetEncoding::U8, 0, "[%s][%d]HUT6_LaneCalActvtCmd value:%d", 85},
        {0x01DA0150, SetEncoding::U8, 0, "[%s][%d]HUT_FD4_HUT__HAVP_Set_Starting value:%d", 817},
        {0x024D3FB0, SetEncoding::U8, 0, "[%s][%d]DMS_FD1_DrvGazeAreaSts value:%d", 1105},
        {0x024D8FB0, SetEncoding::U16BePlus, 500, "[%s][%d]DMS_FD1_HeadPosnX value:%d", 649},
        {0x024D94B0, SetEncoding::U16BePlus, 500, "[%s][%d]DMS_FD1_HeadPosnY value:%d", 661},
        {0x024D99B0, SetEncoding::U16BePlus, 500, "[%s][%d]DMS_FD1_HeadPosnZ value:%d", 673},
        {0x024E0F80, SetEncoding::U8Plus, 75, "[%s][%d]DMS_FD1_HeadYawAng value:%d", 613},
        {0x024E1780, SetEncoding::U8Plus, 25, "[%s][%d]DMS_FD1_HeadPitchAng value:%d", 625},
        {0x024E1F80, SetEncoding::U8Plus, 45, "[%s][%d]DMS_FD1_HeadRollAng value:%d", 637},
        {0x024E4F80, SetEncoding::U8Plus, 90, "[%s][%d]DMS_FD1_RobustGazeYawAng value:%d", 733},
        {0x024E5780, SetEncoding::U8Plus, 90, "[%s][%d]DMS_FD1_RobustGazePitchAng value:%d", 745},
        {0x026F17B0, SetEncoding::U16Be, 0, "[%s][%d]HUT32_XLvl value:%d", 361},
        {0x026F1AB0, SetEncoding::U16Be, 0, "[%s][%d]HUT32_YLvl value:%d", 373},
        {0x033907E0, SetEncoding::U8, 0, "[%s][%d]HUT25_CarWashMode_Req value:%d", 181},
        {0x03701BD0, SetEncoding::U8, 0, "[%s][%d]HUT34_Time_Day value:%d", 985},
    };
    for (const Sample& sample : samples) {
        SCOPED_TRACE(sample.code);
        const qvn::tables::SetRow* const row = findSetSignal(sample.code);
        ASSERT_NE(row, nullptr);
        EXPECT_EQ(row->encoding, sample.encoding);
        EXPECT_EQ(row->offset, sample.offset);
        EXPECT_STREQ(row->logFormat, sample.logFormat);
        EXPECT_EQ(row->logLine, sample.line);
    }
}

TEST(SetCatalogue, ReceivedSignalsCannotBeSet) {
    for (const std::uint32_t code : {0u, 0x00A10FF0u, 0x02440F60u, 0x029F0110u, 0xFFFFFFFDu}) {
        EXPECT_EQ(findSetSignal(code), nullptr) << std::hex << code;
    }
}

}  // namespace
