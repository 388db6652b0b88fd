#include "tables/SetCatalogue.h"

#include "common.base.canservice.pb.h"
#include "tables/SortedByCode.h"

namespace qvn {
namespace tables {

// clang-format off

#define ROW(name, encoding, offset, line) \
    {can_service::QVN_SET_##name, SetEncoding::encoding, offset, "[%s][%d]" #name " value:%d", line}
#define U8(name, line)                 ROW(name, U8, 0, line)
#define U8_PLUS(name, offset, line)    ROW(name, U8Plus, offset, line)
#define U16BE(name, line)              ROW(name, U16Be, 0, line)
#define U16BE_PLUS(name, offset, line) ROW(name, U16BePlus, offset, line)

constexpr SetRow kSetSignals[] = {
    // encoding signal                                  offset line
    U8        (HUT6_Guid_Ovl_Display_Cmd,                     109),
    U8        (HUT6_Radar_DispCmd,                            193),
    U8        (HUT6_LaneCalActvtCmd,                           85),
    U8        (HUT6_CarMdlTrsprcySwtCmd,                      157),
    U8        (HUT6_AutoViewChgCmd,                           121),
    U8        (HUT6_WshSoftSwt,                               337),
    U8        (HUT6_AutoAVMSwSet_Cmd,                         313),
    U8        (HUT6_SwToFieldCalRstCmd,                       493),
    U8        (HUT6_View_SoftswitchCmd,                       325),
    U8        (HUT6_FPAS_AutoModSwt,                          265),
    U8        (HUT6_MEBSwtSet,                                145),
    U8        (HUT6_MODChgReq,                                133),
    U8        (HUT6_CarMdlDispCmd,                             97),
    U8        (HUT6_Sgl_View_Sel,                             169),
    U8        (HUT_FD4_HUT_HAVP_SelfParLot_Ending,            829),
    U8        (HUT_FD4_HUT__HAVP_Set_Starting,                817),
    U8        (HUT_FD4_HUT_HAVP_Return_Btn,                   757),
    U8        (HUT_FD4_HUT_HAVP_Set_Path_Ending,              841),
    U8        (HUT_FD4_HUT_PAVP_PathList_Req,                 853),
    U8        (HUT_FD4_HUT_PAVP_DropOff_Area_req,             865),
    U8        (HUT_FD4_HUT_PAVP_Confirm,                      877),
    U8        (HUT_FD4_HUT_HAVP_APA_Permit,                   805),
    U8        (HUT_FD4_HUT_HAVP_Path_Select,                  781),
    U8        (HUT_FD4_HUT_HAVP_Path_Delete,                  769),
    U8        (HUT_FD4_HUT_HAVP_Path_SetTop,                  793),
    U8        (HUT30_BackReq_AVM,                             481),
    U8        (HUT33_P2P_PrkgDirectSwtCmd,                   1093),
    U8        (HUT33_PathLrngFinshCmd,                        457),
    U8        (HUT33_PathLrngStartCmd,                        529),
    U8        (HUT33_ParkMdlCmd,                              409),
    U8        (HUT33_BackReq_APS,                             385),
    U8        (HUT33_StartPrkgPath2Cmd,                       553),
    U8        (HUT33_DeletePath2Cmd,                          517),
    U8        (HUT33_StartPrkgPath1Cmd,                       541),
    U8        (HUT33_DeletePath1Cmd,                          505),
    U8        (HUT33_SelPrkOutDirReq,                         445),
    U8        (HUT33_SelPrkgFctnCmd,                          229),
    U8        (HUT15_SDWSwtSet,                               277),
    U8        (HUT15_APSPrkgTypSeln,                          469),
    U8        (HUT15_PASExitSpdSwt,                           301),
    U8        (HUT15_APSSwtReq_VR,                            397),
    U8        (DMS_FD1_DrowsnsLvl_ACC,                        577),
    U8        (DMS_FD1_DistrctnLvl_ACC,                       565),
    U8        (DMS_FD1_HeadDetn,                              601),
    U8        (DMS_FD1_DrvGazeAreaSts,                       1105),
    U8        (DMS_FD1_DMSSts,                                589),
    U8        (DMS_FD1_REyeOpenSts,                           709),
    U8        (DMS_FD1_LEyeOpenSts,                           685),
    U16BE_PLUS(DMS_FD1_HeadPosnX,                       500,  649),
    U16BE_PLUS(DMS_FD1_HeadPosnY,                       500,  661),
    U16BE_PLUS(DMS_FD1_HeadPosnZ,                       500,  673),
    U8        (DMS_FD1_LEyeOpenStsQlty,                       697),
    U8        (DMS_FD1_REyeOpenStsQlty,                       721),
    U8_PLUS   (DMS_FD1_HeadYawAng,                       75,  613),
    U8_PLUS   (DMS_FD1_HeadPitchAng,                     25,  625),
    U8_PLUS   (DMS_FD1_HeadRollAng,                      45,  637),
    U8_PLUS   (DMS_FD1_RobustGazeYawAng,                 90,  733),
    U8_PLUS   (DMS_FD1_RobustGazePitchAng,               90,  745),
    U8        (HUT32_ContnPrkgReqValid,                       433),
    U8        (HUT32_DetVideoLost,                            241),
    U8        (HUT32_PrkgCtrlModReqValid,                     217),
    U8        (HUT32_PrkStraightSwtReq_HUT,                  1009),
    U8        (HUT32_PrkgCtrlModReq,                          205),
    U8        (HUT32_ContnPrkgReq,                            421),
    U8        (HUT32_PrkStraightVehStrtReq_HUT_Valid,        1045),
    U8        (HUT32_PrkStraightStrtReq_HUT,                 1057),
    U8        (HUT32_PrkStraightContinueReq_HUT,             1069),
    U8        (HUT32_PrkStraightSuspendOrFinishReq_HUT,      1081),
    U8        (HUT32_PrkStraightSts_HUT,                     1021),
    U8        (HUT32_ScrnOpSts,                               349),
    U8        (HUT32_PrkStraightModSel_HUT,                  1033),
    U16BE     (HUT32_XLvl,                                    361),
    U16BE     (HUT32_YLvl,                                    373),
    U8        (HUT_FD1_HFASwtSts,                             289),
    U8        (HUT10_PASSwtReq_VR,                            253),
    U8        (HUT25_HUT_RemtEngCtrl,                         997),
    U8        (HUT25_CarWashMode_Req,                         181),
    U8        (HUT34_TimeMod,                                 889),
    U8        (HUT34_TimeIndcn,                               901),
    U8        (HUT34_Time_Hour,                               913),
    U8        (HUT34_Time_Minutes,                            925),
    U8        (HUT34_Time_Second,                             937),
    U8        (HUT34_Time_Year_Right,                         961),
    U8        (HUT34_Time_Year_Left,                          949),
    U8        (HUT34_Time_Month,                              973),
    U8        (HUT34_Time_Day,                                985),
};

#undef U16BE_PLUS
#undef U16BE
#undef U8_PLUS
#undef U8
#undef ROW

// clang-format on

static_assert(firstUnsortedRow(kSetSignals) == kSetSignalCount, "set signals must be sorted by code");

const SetRow* findSetSignal(std::uint32_t code) {
    return findByCode(kSetSignals, code);
}

}  // namespace tables
}  // namespace qvn
