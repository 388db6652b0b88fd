#include "tables/SetCatalogue.h"

#include "common.base.canservice.pb.h"
#include "tables/SortedByCode.h"

namespace qvn {
namespace tables {

// clang-format off

#define ROW(name, bytes, offset, line) \
    {can_service::QVN_SET_##name, bytes, offset, "[%s][%d]" #name " value:%d", line}
#define BYTE(name, offset, line) ROW(name, 1, offset, line)
#define WORD(name, offset, line) ROW(name, 2, offset, line)

constexpr SetRow kSetRows[] = {
    //   signal                                 offset    line
    BYTE(HUT6_Guid_Ovl_Display_Cmd,                 0,    109),
    BYTE(HUT6_Radar_DispCmd,                        0,    193),
    BYTE(HUT6_LaneCalActvtCmd,                      0,     85),
    BYTE(HUT6_CarMdlTrsprcySwtCmd,                  0,    157),
    BYTE(HUT6_AutoViewChgCmd,                       0,    121),
    BYTE(HUT6_WshSoftSwt,                           0,    337),
    BYTE(HUT6_AutoAVMSwSet_Cmd,                     0,    313),
    BYTE(HUT6_SwToFieldCalRstCmd,                   0,    493),
    BYTE(HUT6_View_SoftswitchCmd,                   0,    325),
    BYTE(HUT6_FPAS_AutoModSwt,                      0,    265),
    BYTE(HUT6_MEBSwtSet,                            0,    145),
    BYTE(HUT6_MODChgReq,                            0,    133),
    BYTE(HUT6_CarMdlDispCmd,                        0,     97),
    BYTE(HUT6_Sgl_View_Sel,                         0,    169),
    BYTE(HUT_FD4_HUT_HAVP_SelfParLot_Ending,        0,    829),
    BYTE(HUT_FD4_HUT__HAVP_Set_Starting,            0,    817),
    BYTE(HUT_FD4_HUT_HAVP_Return_Btn,               0,    757),
    BYTE(HUT_FD4_HUT_HAVP_Set_Path_Ending,          0,    841),
    BYTE(HUT_FD4_HUT_PAVP_PathList_Req,             0,    853),
    BYTE(HUT_FD4_HUT_PAVP_DropOff_Area_req,         0,    865),
    BYTE(HUT_FD4_HUT_PAVP_Confirm,                  0,    877),
    BYTE(HUT_FD4_HUT_HAVP_APA_Permit,               0,    805),
    BYTE(HUT_FD4_HUT_HAVP_Path_Select,              0,    781),
    BYTE(HUT_FD4_HUT_HAVP_Path_Delete,              0,    769),
    BYTE(HUT_FD4_HUT_HAVP_Path_SetTop,              0,    793),
    BYTE(HUT30_BackReq_AVM,                         0,    481),
    BYTE(HUT33_P2P_PrkgDirectSwtCmd,                0,   1093),
    BYTE(HUT33_PathLrngFinshCmd,                    0,    457),
    BYTE(HUT33_PathLrngStartCmd,                    0,    529),
    BYTE(HUT33_ParkMdlCmd,                          0,    409),
    BYTE(HUT33_BackReq_APS,                         0,    385),
    BYTE(HUT33_StartPrkgPath2Cmd,                   0,    553),
    BYTE(HUT33_DeletePath2Cmd,                      0,    517),
    BYTE(HUT33_StartPrkgPath1Cmd,                   0,    541),
    BYTE(HUT33_DeletePath1Cmd,                      0,    505),
    BYTE(HUT33_SelPrkOutDirReq,                     0,    445),
    BYTE(HUT33_SelPrkgFctnCmd,                      0,    229),
    BYTE(HUT15_SDWSwtSet,                           0,    277),
    BYTE(HUT15_APSPrkgTypSeln,                      0,    469),
    BYTE(HUT15_PASExitSpdSwt,                       0,    301),
    BYTE(HUT15_APSSwtReq_VR,                        0,    397),
    BYTE(DMS_FD1_DrowsnsLvl_ACC,                    0,    577),
    BYTE(DMS_FD1_DistrctnLvl_ACC,                   0,    565),
    BYTE(DMS_FD1_HeadDetn,                          0,    601),
    BYTE(DMS_FD1_DrvGazeAreaSts,                    0,   1105),
    BYTE(DMS_FD1_DMSSts,                            0,    589),
    BYTE(DMS_FD1_REyeOpenSts,                       0,    709),
    BYTE(DMS_FD1_LEyeOpenSts,                       0,    685),
    WORD(DMS_FD1_HeadPosnX,                       500,    649),
    WORD(DMS_FD1_HeadPosnY,                       500,    661),
    WORD(DMS_FD1_HeadPosnZ,                       500,    673),
    BYTE(DMS_FD1_LEyeOpenStsQlty,                   0,    697),
    BYTE(DMS_FD1_REyeOpenStsQlty,                   0,    721),
    BYTE(DMS_FD1_HeadYawAng,                       75,    613),
    BYTE(DMS_FD1_HeadPitchAng,                     25,    625),
    BYTE(DMS_FD1_HeadRollAng,                      45,    637),
    BYTE(DMS_FD1_RobustGazeYawAng,                 90,    733),
    BYTE(DMS_FD1_RobustGazePitchAng,               90,    745),
    BYTE(HUT32_ContnPrkgReqValid,                   0,    433),
    BYTE(HUT32_DetVideoLost,                        0,    241),
    BYTE(HUT32_PrkgCtrlModReqValid,                 0,    217),
    BYTE(HUT32_PrkStraightSwtReq_HUT,               0,   1009),
    BYTE(HUT32_PrkgCtrlModReq,                      0,    205),
    BYTE(HUT32_ContnPrkgReq,                        0,    421),
    BYTE(HUT32_PrkStraightVehStrtReq_HUT_Valid,     0,   1045),
    BYTE(HUT32_PrkStraightStrtReq_HUT,              0,   1057),
    BYTE(HUT32_PrkStraightContinueReq_HUT,          0,   1069),
    BYTE(HUT32_PrkStraightSuspendOrFinishReq_HUT,   0,   1081),
    BYTE(HUT32_PrkStraightSts_HUT,                  0,   1021),
    BYTE(HUT32_ScrnOpSts,                           0,    349),
    BYTE(HUT32_PrkStraightModSel_HUT,               0,   1033),
    WORD(HUT32_XLvl,                                0,    361),
    WORD(HUT32_YLvl,                                0,    373),
    BYTE(HUT_FD1_HFASwtSts,                         0,    289),
    BYTE(HUT10_PASSwtReq_VR,                        0,    253),
    BYTE(HUT25_HUT_RemtEngCtrl,                     0,    997),
    BYTE(HUT25_CarWashMode_Req,                     0,    181),
    BYTE(HUT34_TimeMod,                             0,    889),
    BYTE(HUT34_TimeIndcn,                           0,    901),
    BYTE(HUT34_Time_Hour,                           0,    913),
    BYTE(HUT34_Time_Minutes,                        0,    925),
    BYTE(HUT34_Time_Second,                         0,    937),
    BYTE(HUT34_Time_Year_Right,                     0,    961),
    BYTE(HUT34_Time_Year_Left,                      0,    949),
    BYTE(HUT34_Time_Month,                          0,    973),
    BYTE(HUT34_Time_Day,                            0,    985),
};

#undef WORD
#undef BYTE
#undef ROW

// clang-format on

constexpr Span<SetRow> kSetSignals(kSetRows);

static_assert(firstUnsortedRow(kSetRows) == kSetSignals.size(), "set signals must be sorted by code");

SetRange setRange(const SetRow& row) {
    return {-row.offset, (row.bytes == 1 ? 0xFF : 0xFFFF) - row.offset};
}

const SetRow* findSetSignal(std::uint32_t code) {
    return findByCode(kSetRows, code);
}

}  // namespace tables
}  // namespace qvn
