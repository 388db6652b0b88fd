#include <gtest/gtest.h>
#include <vehicle/VehicleClient.h>

#include <limits>

#include "support/CanServiceDouble.h"
#include "support/LibraryTest.h"

namespace {

using namespace qvn::test;
using namespace qvn::platform::vehicle;

class VehicleClientSetTest : public LibraryTest {
protected:
    VehicleClientSetTest() { EXPECT_TRUE(server.waitForSubscriptions(1)); }

    /// What arrived since the last call, after `count` requests at least.
    std::vector<SetRequest> requests(std::size_t count) {
        EXPECT_TRUE(server.requests.waitForSize(count));
        std::vector<SetRequest> all = server.requests.entries();
        server.requests.clear();
        return all;
    }
    bool setInt(int property, int number) {
        std::vector<int> value = {number, 99};
        return client.setInt32Property(property, value);
    }
    bool setLong(int property, long number) {
        std::vector<long> value = {number, 99};
        return client.setInt64Property(property, value);
    }
    bool setFloat(int property, float number) {
        std::vector<float> value = {number, 99};
        return client.setFloatProperty(property, value);
    }
    bool setByte(int property, unsigned char number) {
        std::vector<unsigned char> value = {number, 99};
        return client.setByteProperty(property, value);
    }
    bool setBool(int property, bool value) { return client.setBoolProperty(property, value); }

    CanServiceDouble server;
    VehicleClient client;
};

struct Settable {
    int property;
    int code;
    std::string three;  ///< raw bytes of the number 3
    std::string yes;    ///< raw bytes of true
    std::size_t rows;   ///< requests of one set
};

std::string raw(int value) {
    return std::string(1, static_cast<char>(value));
}
std::string raw(int high, int low) {
    return raw(high) + raw(low);
}

const Settable kSettable[] = {
    {0x21401C23, 0x004A0550, raw(0x03), raw(0x01), 2},              // HUT6_LaneCalActvtCmd
    {0x21403033, 0x004A07F0, raw(0x03), raw(0x01), 1},              // HUT6_CarMdlDispCmd
    {0x21403034, 0x004A00F0, raw(0x03), raw(0x01), 1},              // HUT6_Guid_Ovl_Display_Cmd
    {0x2140304A, 0x004A06F0, raw(0x03), raw(0x01), 1},              // HUT6_AutoViewChgCmd
    {0x21403036, 0x004A07D0, raw(0x03), raw(0x01), 1},              // HUT6_MODChgReq
    {0x21401C1F, 0x004A07B0, raw(0x03), raw(0x01), 1},              // HUT6_MEBSwtSet
    {0x2140303B, 0x004A0630, raw(0x03), raw(0x01), 1},              // HUT6_CarMdlTrsprcySwtCmd
    {0x2140307D, 0x004A1240, raw(0x03), raw(0x01), 1},              // HUT6_Sgl_View_Sel
    {0x21403050, 0x004A0510, raw(0x03), raw(0x01), 1},              // HUT6_Radar_DispCmd
    {0x2140304E, 0x026F0360, raw(0x03), raw(0x01), 1},              // HUT32_PrkgCtrlModReq
    {0x2140304D, 0x026F0150, raw(0x03), raw(0x01), 1},              // HUT32_PrkgCtrlModReqValid
    {0x2140303E, 0x01ED07F0, raw(0x03), raw(0x01), 1},              // HUT33_SelPrkgFctnCmd
    {0x21403041, 0x026F0130, raw(0x03), raw(0x01), 2},              // HUT32_DetVideoLost
    {0x2140423C, 0x03310DE0, raw(0x03), raw(0x01), 1},              // HUT10_PASSwtReq_VR
    {0x21401C1E, 0x004A0790, raw(0x03), raw(0x01), 1},              // HUT6_FPAS_AutoModSwt
    {0x21401C20, 0x01EE04F0, raw(0x03), raw(0x01), 1},              // HUT15_SDWSwtSet
    {0x21401824, 0x02C30AF0, raw(0x03), raw(0x01), 1},              // HUT_FD1_HFASwtSts
    {0x21401C22, 0x01EE0D60, raw(0x03), raw(0x01), 1},              // HUT15_PASExitSpdSwt
    {0x21401C21, 0x004A0730, raw(0x03), raw(0x01), 1},              // HUT6_AutoAVMSwSet_Cmd
    {0x21403035, 0x004A0770, raw(0x03), raw(0x01), 1},              // HUT6_View_SoftswitchCmd
    {0x21405265, 0x004A0710, raw(0x03), raw(0x01), 1},              // HUT6_WshSoftSwt
    {0x21405275, 0x026F0BE0, raw(0x03), raw(0x01), 1},              // HUT32_ScrnOpSts
    {0x21405276, 0x026F17B0, raw(0x00, 0x03), raw(0x00, 0x01), 1},  // HUT32_XLvl
    {0x21405277, 0x026F1AB0, raw(0x00, 0x03), raw(0x00, 0x01), 1},  // HUT32_YLvl
    {0x21405283, 0x01ED0290, raw(0x03), raw(0x01), 1},              // HUT33_BackReq_APS
    {0x2140423E, 0x01EE0DE0, raw(0x03), raw(0x01), 1},              // HUT15_APSSwtReq_VR
    {0x21405282, 0x01ED0270, raw(0x03), raw(0x01), 1},              // HUT33_ParkMdlCmd
    {0x21405279, 0x026F03E0, raw(0x03), raw(0x01), 1},              // HUT32_ContnPrkgReq
    {0x21405278, 0x026F0110, raw(0x03), raw(0x01), 1},              // HUT32_ContnPrkgReqValid
    {0x2140527D, 0x01ED05F0, raw(0x03), raw(0x01), 1},              // HUT33_SelPrkOutDirReq
    {0x2140527B, 0x01ED0230, raw(0x03), raw(0x01), 1},              // HUT33_PathLrngFinshCmd
    {0x21405267, 0x01EE08A0, raw(0x03), raw(0x01), 1},              // HUT15_APSPrkgTypSeln
    {0x21405274, 0x01E901B0, raw(0x03), raw(0x01), 1},              // HUT30_BackReq_AVM
    {0x21401C24, 0x004A0750, raw(0x03), raw(0x01), 1},              // HUT6_SwToFieldCalRstCmd
    {0x21405281, 0x01ED0390, raw(0x03), raw(0x01), 1},              // HUT33_DeletePath1Cmd
    {0x2140527F, 0x01ED0350, raw(0x03), raw(0x01), 1},              // HUT33_DeletePath2Cmd
    {0x2140527C, 0x01ED0250, raw(0x03), raw(0x01), 1},              // HUT33_PathLrngStartCmd
    {0x21405280, 0x01ED0370, raw(0x03), raw(0x01), 1},              // HUT33_StartPrkgPath1Cmd
    {0x2140527E, 0x01ED0330, raw(0x03), raw(0x01), 1},              // HUT33_StartPrkgPath2Cmd
    {0x2100822E, 0x024D17F0, raw(0x03), raw(0x01), 1},              // DMS_FD1_DistrctnLvl_ACC
    {0x2100822F, 0x024D1730, raw(0x03), raw(0x01), 1},              // DMS_FD1_DrowsnsLvl_ACC
    {0x21008230, 0x024D4BF0, raw(0x03), raw(0x01), 1},              // DMS_FD1_DMSSts
    {0x21008231, 0x024D2410, raw(0x03), raw(0x01), 1},              // DMS_FD1_HeadDetn
    {0x21008232, 0x024E0F80, raw(0x4E), raw(0x4C), 1},              // DMS_FD1_HeadYawAng
    {0x21008233, 0x024E1780, raw(0x1C), raw(0x1A), 1},              // DMS_FD1_HeadPitchAng
    {0x21008234, 0x024E1F80, raw(0x30), raw(0x2E), 1},              // DMS_FD1_HeadRollAng
    {0x21008235, 0x024D8FB0, raw(0x01, 0xF7), raw(0x01, 0xF5), 1},  // DMS_FD1_HeadPosnX
    {0x21008236, 0x024D94B0, raw(0x01, 0xF7), raw(0x01, 0xF5), 1},  // DMS_FD1_HeadPosnY
    {0x21008237, 0x024D99B0, raw(0x01, 0xF7), raw(0x01, 0xF5), 1},  // DMS_FD1_HeadPosnZ
    {0x21008238, 0x024D5DE0, raw(0x03), raw(0x01), 1},              // DMS_FD1_LEyeOpenSts
    {0x21008239, 0x024DAFF0, raw(0x03), raw(0x01), 1},              // DMS_FD1_LEyeOpenStsQlty
    {0x2100823A, 0x024D5D60, raw(0x03), raw(0x01), 1},              // DMS_FD1_REyeOpenSts
    {0x2100823B, 0x024DB3F0, raw(0x03), raw(0x01), 1},              // DMS_FD1_REyeOpenStsQlty
    {0x2100823C, 0x024E4F80, raw(0x5D), raw(0x5B), 1},              // DMS_FD1_RobustGazeYawAng
    {0x2100823D, 0x024E5780, raw(0x5D), raw(0x5B), 1},              // DMS_FD1_RobustGazePitchAng
    {0x214054D1, 0x01DA0170, raw(0x03), raw(0x01), 1},              // HUT_FD4_HUT_HAVP_Return_Btn
    {0x214054D7, 0x01DA0FC0, raw(0x03), raw(0x01), 1},              // HUT_FD4_HUT_HAVP_Path_Delete
    {0x214054D8, 0x01DA0DC0, raw(0x03), raw(0x01), 1},              // HUT_FD4_HUT_HAVP_Path_Select
    {0x214054D9, 0x01DA13C0, raw(0x03), raw(0x01), 1},              // HUT_FD4_HUT_HAVP_Path_SetTop
    {0x2100823F, 0x01DA0AE0, raw(0x03), raw(0x01), 1},              // HUT_FD4_HUT_HAVP_APA_Permit
    {0x21008240, 0x01DA0150, raw(0x03), raw(0x01), 1},              // HUT_FD4_HUT__HAVP_Set_Starting
    {0x214054D2, 0x01DA0130, raw(0x03), raw(0x01), 1},              // HUT_FD4_HUT_HAVP_SelfParLot_Ending
    {0x214054D5, 0x01DA02B0, raw(0x03), raw(0x01), 1},              // HUT_FD4_HUT_HAVP_Set_Path_Ending
    {0x214054DD, 0x01DA05B0, raw(0x03), raw(0x01), 1},              // HUT_FD4_HUT_PAVP_PathList_Req
    {0x214054DC, 0x01DA05D0, raw(0x03), raw(0x01), 1},              // HUT_FD4_HUT_PAVP_DropOff_Area_req
    {0x214054DB, 0x01DA05F0, raw(0x03), raw(0x01), 1},              // HUT_FD4_HUT_PAVP_Confirm
    {0x2140202E, 0x03700210, raw(0x03), raw(0x01), 1},              // HUT34_TimeMod
    {0x2140202F, 0x03700230, raw(0x03), raw(0x01), 1},              // HUT34_TimeIndcn
    {0x21402030, 0x037007D0, raw(0x03), raw(0x01), 1},              // HUT34_Time_Hour
    {0x21402031, 0x03700BE0, raw(0x03), raw(0x01), 1},              // HUT34_Time_Minutes
    {0x21402032, 0x03700FE0, raw(0x03), raw(0x01), 1},              // HUT34_Time_Second
    {0x21402033, 0x037013C0, raw(0x03), raw(0x01), 1},              // HUT34_Time_Year_Left
    {0x21402034, 0x037011C0, raw(0x03), raw(0x01), 1},              // HUT34_Time_Year_Right
    {0x21402035, 0x037017C0, raw(0x03), raw(0x01), 1},              // HUT34_Time_Month
    {0x21402036, 0x03701BD0, raw(0x03), raw(0x01), 1},              // HUT34_Time_Day
    {0x2140402E, 0x033906E0, raw(0x03), raw(0x01), 1},              // HUT25_HUT_RemtEngCtrl
    {0x21404033, 0x026F0170, raw(0x03), raw(0x01), 1},              // HUT32_PrkStraightSwtReq_HUT
    {0x21404035, 0x026F0790, raw(0x03), raw(0x01), 1},              // HUT32_PrkStraightSts_HUT
    {0x21404034, 0x026F0FF0, raw(0x03), raw(0x01), 1},              // HUT32_PrkStraightModSel_HUT
    {0x21404037, 0x026F0590, raw(0x03), raw(0x01), 1},              // HUT32_PrkStraightVehStrtReq_HUT_Valid
    {0x21404036, 0x026F05B0, raw(0x03), raw(0x01), 1},              // HUT32_PrkStraightStrtReq_HUT
    {0x21404038, 0x026F06F0, raw(0x03), raw(0x01), 1},              // HUT32_PrkStraightContinueReq_HUT
    {0x2140407D, 0x026F0720, raw(0x03), raw(0x01), 1},              // HUT32_PrkStraightSuspendOrFinishReq_HUT
    {0x214054CF, 0x01ED0210, raw(0x03), raw(0x01), 1},              // HUT33_P2P_PrkgDirectSwtCmd
    {0x21403C3D, 0x024D3FB0, raw(0x03), raw(0x01), 1},              // DMS_FD1_DrvGazeAreaSts
};

TEST_F(VehicleClientSetTest, EverySettablePropertyByEverySetter) {
    EXPECT_EQ(sizeof(kSettable) / sizeof(kSettable[0]), 85u);
    for (const Settable& settable : kSettable) {
        SCOPED_TRACE(settable.property);
        EXPECT_TRUE(setInt(settable.property, 3));
        EXPECT_TRUE(setLong(settable.property, 3));
        EXPECT_TRUE(setFloat(settable.property, 3.9f));
        EXPECT_TRUE(setByte(settable.property, 3));
        EXPECT_TRUE(setBool(settable.property, true));
        std::vector<SetRequest> expected(4 * settable.rows, {settable.code, settable.three});
        expected.insert(expected.end(), settable.rows, {settable.code, settable.yes});
        EXPECT_EQ(requests(expected.size()), expected);
    }
}

TEST_F(VehicleClientSetTest, Edges) {
    constexpr int kOneByte = 0x21403033;  // CarMdlDispCmd
    constexpr int kYaw = 0x21008232;      // value + 75
    constexpr int kRoll = 0x21008234;     // value + 45
    constexpr int kHeadX = 0x21008235;    // two bytes, value + 500
    constexpr int kTouchX = 0x21405276;   // two bytes
    const struct {
        const char* what;
        bool done;
        std::string expected;
    } cases[] = {
        {"int -1", setInt(kOneByte, -1), raw(0xFF)},
        {"int 300", setInt(kOneByte, 300), raw(0x2C)},
        {"long 0x12345", setLong(kOneByte, 0x12345), raw(0x45)},
        {"long -2", setLong(kOneByte, -2), raw(0xFE)},
        {"byte 255", setByte(kOneByte, 255), raw(0xFF)},
        {"false", setBool(kOneByte, false), raw(0x00)},
        {"float -1", setFloat(kOneByte, -1.0f), raw(0x00)},
        {"float 256", setFloat(kOneByte, 256.0f), raw(0x00)},
        {"float NaN", setFloat(kOneByte, std::numeric_limits<float>::quiet_NaN()), raw(0x00)},
        {"float infinity", setFloat(kOneByte, std::numeric_limits<float>::infinity()), raw(0xFF)},
        {"yaw int -75", setInt(kYaw, -75), raw(0x00)},
        {"yaw int -80", setInt(kYaw, -80), raw(0xFB)},
        {"yaw float -80", setFloat(kYaw, -80.0f), raw(0x00)},
        {"yaw float -74.5", setFloat(kYaw, -74.5f), raw(0x00)},
        {"yaw byte 200", setByte(kYaw, 200), raw(0x13)},
        {"yaw true", setBool(kYaw, true), raw(0x4C)},
        {"roll int 10", setInt(kRoll, 10), raw(0x37)},
        {"x int -500", setInt(kHeadX, -500), raw(0x00, 0x00)},
        {"x int 0", setInt(kHeadX, 0), raw(0x01, 0xF4)},
        {"x int 100", setInt(kHeadX, 100), raw(0x02, 0x58)},
        {"x long 65535", setLong(kHeadX, 65535), raw(0x01, 0xF3)},
        {"x float -500.5", setFloat(kHeadX, -500.5f), raw(0x00, 0x00)},
        {"x float 1e30", setFloat(kHeadX, 1e30f), raw(0xFF, 0xFF)},
        {"touch int 300", setInt(kTouchX, 300), raw(0x01, 0x2C)},
        {"touch int -1", setInt(kTouchX, -1), raw(0xFF, 0xFF)},
        {"touch float 65536", setFloat(kTouchX, 65536.0f), raw(0x00, 0x00)},
    };
    const std::size_t count = sizeof(cases) / sizeof(cases[0]);
    const std::vector<SetRequest> arrived = requests(count);
    ASSERT_EQ(arrived.size(), count);
    for (std::size_t i = 0; i < count; ++i) {
        EXPECT_TRUE(cases[i].done) << cases[i].what;
        EXPECT_EQ(arrived[i].raw, cases[i].expected) << cases[i].what;
    }
}

TEST_F(VehicleClientSetTest, WhatCannotBeSet) {
    std::string text = "1";
    EXPECT_FALSE(setInt(0x11410A10, 1));  // five received signals
    EXPECT_FALSE(setFloat(0x21600E1F, 1));
    EXPECT_FALSE(setByte(0x12345678, 1));  // unknown
    EXPECT_FALSE(client.setStringProperty(0x21403033, text));
    EXPECT_TRUE(setInt(0x21403033, 1));
    EXPECT_EQ(requests(1), (std::vector<SetRequest>{{0x004A07F0, "\x01"}}));
}

}  // namespace
