#include "tables/SignalLists.h"

#include "common.base.canservice.pb.h"
#include "tables/MessageCatalogue.h"
#include "tables/SetCatalogue.h"
#include "tables/SortedByCode.h"

// clang-format off

// SIGNAL spells the code's name; PADDED adds the blanks that a name ends with.
#define SIGNAL(name)         {#name, can_service::name}
#define PADDED(name, blanks) {#name blanks, can_service::name}

const SignalListRow QVN_GET_HAP_FD3_signals[] = {
    SIGNAL(QVN_GET_HAP_FD3_FPAS_FLCornrSnsrFailSts),
    SIGNAL(QVN_GET_HAP_FD3_FPAS_FLMiddlSnsrFailSts),
    SIGNAL(QVN_GET_HAP_FD3_FPAS_FRMiddlSnsrFailSts),
    SIGNAL(QVN_GET_HAP_FD3_FPAS_FRCornrSnsrFailSts),
    SIGNAL(QVN_GET_HAP_FD3_RPAS_RLCornrSnsrFailSts),
    SIGNAL(QVN_GET_HAP_FD3_RPAS_RLMiddlSnsrFailSts),
    SIGNAL(QVN_GET_HAP_FD3_RPAS_RRMiddlSnsrFailSts),
    SIGNAL(QVN_GET_HAP_FD3_RPAS_RRCornrSnsrFailSts),
    SIGNAL(QVN_GET_HAP_FD3_APS_FRSideSnsrFailSts),
    SIGNAL(QVN_GET_HAP_FD3_APS_FLSideSnsrFailSts),
    SIGNAL(QVN_GET_HAP_FD3_APS_RRSideSnsrFailSts),
    SIGNAL(QVN_GET_HAP_FD3_APS_RLSideSnsrFailSts),
    SIGNAL(QVN_GET_HAP_FD3_RADS_FuncSts),
    SIGNAL(QVN_GET_HAP_FD3_APA_MenuDispCtrlCmd),
    SIGNAL(QVN_GET_HAP_FD3_FADS_FuncSts),
    SIGNAL(QVN_GET_HAP_FD3_FPAS_AutoModSts),
    SIGNAL(QVN_GET_HAP_FD3_SDWActiveSts),
    SIGNAL(QVN_GET_HAP_FD3_APS_ObjRiSideAr1),
    PADDED(QVN_GET_HAP_FD3_APS_ObjRiSideAr2, " "),
    SIGNAL(QVN_GET_HAP_FD3_APS_ObjRiSideAr3),
    SIGNAL(QVN_GET_HAP_FD3_APS_ObjRiSideAr4),
    PADDED(QVN_GET_HAP_FD3_APS_ObjRiSideAr5, " "),
    SIGNAL(QVN_GET_HAP_FD3_APS_ObjLeSideAr1),
    PADDED(QVN_GET_HAP_FD3_APS_ObjLeSideAr2, " "),
    PADDED(QVN_GET_HAP_FD3_APS_ObjLeSideAr3, " "),
    SIGNAL(QVN_GET_HAP_FD3_APS_ObjLeSideAr4),
    PADDED(QVN_GET_HAP_FD3_APS_ObjLeSideAr5, " "),
    SIGNAL(QVN_GET_HAP_FD3_RPAS_ObjRRCornrAr1),
    SIGNAL(QVN_GET_HAP_FD3_RPAS_ObjRRCornrAr2),
    SIGNAL(QVN_GET_HAP_FD3_RPAS_ObjRRMidlAr1),
    SIGNAL(QVN_GET_HAP_FD3_RPAS_ObjRRMidlAr2),
    PADDED(QVN_GET_HAP_FD3_RPAS_ObjRLMidlAr1, " "),
    SIGNAL(QVN_GET_HAP_FD3_RPAS_ObjRLMidlAr2),
    SIGNAL(QVN_GET_HAP_FD3_RPAS_ObjRLCornrAr1),
    SIGNAL(QVN_GET_HAP_FD3_RPAS_ObjRLCornrAr2),
    SIGNAL(QVN_GET_HAP_FD3_FPAS_ObjFLCornrAr1),
    SIGNAL(QVN_GET_HAP_FD3_FPAS_ObjFLCornrAr2),
    SIGNAL(QVN_GET_HAP_FD3_FPAS_ObjFLMidlAr1),
    SIGNAL(QVN_GET_HAP_FD3_FPAS_ObjFLMidlAr2),
    SIGNAL(QVN_GET_HAP_FD3_FPAS_ObjFRMidlAr1),
    SIGNAL(QVN_GET_HAP_FD3_FPAS_ObjFRMidlAr2),
    SIGNAL(QVN_GET_HAP_FD3_FPAS_ObjFRCornrAr1),
    SIGNAL(QVN_GET_HAP_FD3_FPAS_ObjFRCornrAr2),
    SIGNAL(QVN_GET_HAP_FD3_MEBWorkSts),
    SIGNAL(QVN_GET_HAP_FD3_MEB_EnableSts),
    SIGNAL(QVN_GET_HAP_FD3_RPAS_SoundIndcn),
    SIGNAL(QVN_GET_HAP_FD3_FPAS_SoundIndcn),
    SIGNAL(QVN_GET_HAP_FD3_SDW_SoundIndcn),
    SIGNAL(QVN_GET_HAP_FD3_FPAS_WorkSts),
    SIGNAL(QVN_GET_HAP_FD3_RPAS_WorkSts),
    SIGNAL(QVN_GET_HAP_FD3_HAP_TextIconDispCtrl),
    SIGNAL(QVN_GET_HAP_FD3_APA_FuncSts),
    SIGNAL(QVN_GET_HAP_FD3_P2P_FuncSts),
    SIGNAL(QVN_GET_HAP_FD3_FPAS_NearBrrdstn),
    SIGNAL(QVN_GET_HAP_FD3_RPAS_NearBrrdstn),
};

const SignalListRow QVN_GET_ABS2_signals[] = {
    SIGNAL(QVN_GET_ABS2_RLWheelSpdVld),
    SIGNAL(QVN_GET_ABS2_RLWheelSpd),
    SIGNAL(QVN_GET_ABS2_RRWheelSpdVld),
    SIGNAL(QVN_GET_ABS2_RRWheelSpd),
};

const SignalListRow QVN_GET_ESP_FD2_signals[] = {
    SIGNAL(QVN_GET_ESP_FD2_VehSpd),
    SIGNAL(QVN_GET_ESP_FD2_VehSpdVld),
};

const SignalListRow QVN_GET_HAP_FD1_signals[] = {
    SIGNAL(QVN_GET_HAP_FD1_P2P_PahDelSts),
    SIGNAL(QVN_GET_HAP_FD1_P2P_SelfDetErrCode),
    SIGNAL(QVN_GET_HAP_FD1_P2P_SelfDetSts),
    SIGNAL(QVN_GET_HAP_FD1_P2P_Pah1Avail),
    SIGNAL(QVN_GET_HAP_FD1_P2P_Pah2Avail),
    SIGNAL(QVN_GET_HAP_FD1_HAP_PrkgModCurrSts),
    SIGNAL(QVN_GET_HAP_FD1_APS_WorkSts),
    SIGNAL(QVN_GET_HAP_FD1_HAP_SwtDispCtrlCmd),
    SIGNAL(QVN_GET_HAP_FD1_APS_TextDisp),
    SIGNAL(QVN_GET_HAP_FD1_APS_SysSoundIndcn),
    SIGNAL(QVN_GET_HAP_FD1_LParaPrkgOutVald),
    SIGNAL(QVN_GET_HAP_FD1_RParaPrkgOutVald),
    SIGNAL(QVN_GET_HAP_FD1_HeadVertPrkgOutVald),
    SIGNAL(QVN_GET_HAP_FD1_TailVertPrkgOutVald),
    SIGNAL(QVN_GET_HAP_FD1_APS_SlotDisp),
    SIGNAL(QVN_GET_HAP_FD1_APS_ProcBar),
    SIGNAL(QVN_GET_HAP_FD1_HAVP_WorkSts),
    SIGNAL(QVN_GET_HAP_FD1_HAVP_StartBtn_Ena),
    SIGNAL(QVN_GET_HAP_FD1_HAVP_StopBtn_Ena),
    SIGNAL(QVN_GET_HAP_FD1_HAVP_SelfParLotEnding_Ena),
    SIGNAL(QVN_GET_HAP_FD1_PAVP_FuncSts),
    SIGNAL(QVN_GET_HAP_FD1_PAVP_TextDis),
    SIGNAL(QVN_GET_HAP_FD1_P2P_PrkgDirectSts),
    SIGNAL(QVN_GET_HAP_FD1_ParallelSlotBtn_Ena),
    SIGNAL(QVN_GET_HAP_FD1_VerticalSlotBtn_Ena),
    SIGNAL(QVN_GET_HAP_FD1_ClockwiseBtn_Ena),
    SIGNAL(QVN_GET_HAP_FD1_AnticlockwiseBtn_Ena),
    SIGNAL(QVN_GET_HAP_FD1_SlotConfirmBtn_Ena),
    SIGNAL(QVN_GET_HAP_FD1_APS_ESP_BrkDistance),
};

const SignalListRow QVN_GET_PEPS2_signals[] = {
    SIGNAL(QVN_GET_PEPS2_SysPowerMod),
    SIGNAL(QVN_GET_PEPS2_SysPowerModVld),
};

const SignalListRow QVN_GET_HCU_HP5_signals[] = {
    SIGNAL(QVN_GET_HCU_HP5_DrvModDispSts_0x201),
    SIGNAL(QVN_GET_HCU_HP5_DrvModDisp_0x201),
};

const SignalListRow QVN_GET_ECM2_signals[] = {
    SIGNAL(QVN_GET_ECM2_EngState),
};

const SignalListRow QVN_GET_CSA2_signals[] = {
    PADDED(QVN_GET_CSA2_SteerWheelAng, " "),
    SIGNAL(QVN_GET_CSA2_SteerWheelAngSign),
};

const SignalListRow QVN_GET_ECM_PT7_signals[] = {
    SIGNAL(QVN_GET_ECM_PT7_EngState_PHEV),
};

const SignalListRow QVN_GET_EPB1_signals[] = {
    SIGNAL(QVN_GET_EPB1_EPBSts),
};

const SignalListRow QVN_GET_BCM1_signals[] = {
    PADDED(QVN_GET_BCM1_DrvDoorSts, "  "),
    SIGNAL(QVN_GET_BCM1_LRDoorSts),
    SIGNAL(QVN_GET_BCM1_PassengerDoorSts),
    SIGNAL(QVN_GET_BCM1_RRDoorSts),
    SIGNAL(QVN_GET_BCM1_TrunkSts),
};

const SignalListRow QVN_GET_HAP_FD2_signals[] = {
    SIGNAL(QVN_GET_HAP_FD2_RadarDispSts),
    SIGNAL(QVN_GET_HAP_FD2_LaneCalSts),
    SIGNAL(QVN_GET_HAP_FD2_CarMdlDispSts),
    SIGNAL(QVN_GET_HAP_FD2_SigViewIndcn),
    SIGNAL(QVN_GET_HAP_FD2_GuidOvlSts),
    SIGNAL(QVN_GET_HAP_FD2_MOD_WorkSts),
    SIGNAL(QVN_GET_HAP_FD2_MOD_AlarmSts),
    SIGNAL(QVN_GET_HAP_FD2_CarMdlTrsprcySts),
    SIGNAL(QVN_GET_HAP_FD2_HAP_Hmi_Index),
    SIGNAL(QVN_GET_HAP_FD2_FrntCamInpFailSts),
    SIGNAL(QVN_GET_HAP_FD2_RearCamInpFailSts),
    SIGNAL(QVN_GET_HAP_FD2_LeCamInpFailSts),
    SIGNAL(QVN_GET_HAP_FD2_RiCamInpFailSts),
    SIGNAL(QVN_GET_HAP_FD2_OvlOpFailSts),
    SIGNAL(QVN_GET_HAP_FD2_AVM_CurrSts),
    SIGNAL(QVN_GET_HAP_FD2_HAP_DispCmd),
    SIGNAL(QVN_GET_HAP_FD2_AutoAVMSwtSet_Sts),
    SIGNAL(QVN_GET_HAP_FD2_AutoViewChgFuncSts),
    SIGNAL(QVN_GET_HAP_FD2_EolNotCmpltd),
    SIGNAL(QVN_GET_HAP_FD2_LaneCalFltSts),
    SIGNAL(QVN_GET_HAP_FD2_CurrCalResultSts),
    SIGNAL(QVN_GET_HAP_FD2_AVM_3DAngSts),
};

const SignalListRow QVN_GET_ABS1_signals[] = {
    SIGNAL(QVN_GET_ABS1_FLWheelSpdVld),
    SIGNAL(QVN_GET_ABS1_FLWheelSpd),
    SIGNAL(QVN_GET_ABS1_FRWheelSpdVld),
    SIGNAL(QVN_GET_ABS1_FRWheelSpd),
};

const SignalListRow QVN_GET_BCM3_signals[] = {
    SIGNAL(QVN_GET_BCM3_LasHdLmpSts),
    SIGNAL(QVN_GET_BCM3_DoorLockSts),
};

const SignalListRow QVN_GET_DCT5_signals[] = {
    PADDED(QVN_GET_DCT5_TGS_LEVER, " "),
};

const SignalListRow QVN_GET_ACC_FD2_signals[] = {
    SIGNAL(QVN_GET_ACC_FD2_HWA_ModDisp),
};

const SignalListRow QVN_GET_BCM8_signals[] = {
    SIGNAL(QVN_GET_BCM8_PASWorkCmd),
    SIGNAL(QVN_GET_BCM8_RViewMirrorSts),
    SIGNAL(QVN_GET_BCM8_RemoteModSts),
};

const SignalListRow QVN_GET_CSA3_signals[] = {
    SIGNAL(QVN_GET_CSA3_SeekUpSwtSts),
    SIGNAL(QVN_GET_CSA3_SeekDwnSwtSts),
    SIGNAL(QVN_GET_CSA3_AdjVolUpSwtSts),
    SIGNAL(QVN_GET_CSA3_AdjVolDwnSwtSts),
    SIGNAL(QVN_GET_CSA3_EnterSwtSts_Mmed),
};

const SignalListRow QVN_GET_DCT_FD4_signals[] = {
    SIGNAL(QVN_GET_DCT_FD4_DrvModDispSts_0x236),
    SIGNAL(QVN_GET_DCT_FD4_DrvModDisp_0x236),
};

const SignalListRow QVN_GET_HAP_FD7_signals[] = {
    SIGNAL(QVN_GET_HAP_FD7_HAVP_LrngDst),
    SIGNAL(QVN_GET_HAP_FD7_HAVP_HUT_TextDisp),
    SIGNAL(QVN_GET_HAP_FD7_HAVP_ScFail_info),
    SIGNAL(QVN_GET_HAP_FD7_PAVP_ScFail_info),
};

const SignalListRow QVN_GET_CSA1_signals[] = {
    SIGNAL(QVN_GET_CSA1_LTurnLmpSwtSts),
    SIGNAL(QVN_GET_CSA1_RTurnLmpSwtSts),
};

const SignalListRow QVN_GET_HCU_PT4_signals[] = {
    SIGNAL(QVN_GET_HCU_PT4_CarWashMode_StsDisp),
};

const SignalListRow QVN_GET_PLG_1_signals[] = {
    SIGNAL(QVN_GET_PLG_1_PLG_Sts),
};

const SignalListRow QVN_GET_R_PBox1_signals[] = {
    SIGNAL(QVN_GET_R_PBox1_LTurnLmpSts_R_Pbox),
    SIGNAL(QVN_GET_R_PBox1_RTurnLmpSts_R_Pbox),
};

const SignalListRow QVN_SET_HUT_FD1_signals[] = {
    SIGNAL(QVN_SET_HUT_FD1_HFASwtSts),
};

const SignalListRow QVN_SET_HUT34_signals[] = {
    SIGNAL(QVN_SET_HUT34_TimeMod),
    SIGNAL(QVN_SET_HUT34_TimeIndcn),
    SIGNAL(QVN_SET_HUT34_Time_Hour),
    SIGNAL(QVN_SET_HUT34_Time_Minutes),
    SIGNAL(QVN_SET_HUT34_Time_Second),
    SIGNAL(QVN_SET_HUT34_Time_Year_Left),
    SIGNAL(QVN_SET_HUT34_Time_Year_Right),
    SIGNAL(QVN_SET_HUT34_Time_Month),
    SIGNAL(QVN_SET_HUT34_Time_Day),
};

const SignalListRow QVN_SET_HUT32_signals[] = {
    SIGNAL(QVN_SET_HUT32_PrkgCtrlModReq),
    SIGNAL(QVN_SET_HUT32_PrkgCtrlModReqValid),
    SIGNAL(QVN_SET_HUT32_DetVideoLost),
    SIGNAL(QVN_SET_HUT32_ScrnOpSts),
    SIGNAL(QVN_SET_HUT32_XLvl),
    SIGNAL(QVN_SET_HUT32_YLvl),
    SIGNAL(QVN_SET_HUT32_ContnPrkgReq),
    SIGNAL(QVN_SET_HUT32_ContnPrkgReqValid),
    SIGNAL(QVN_SET_HUT32_PrkStraightSwtReq_HUT),
    SIGNAL(QVN_SET_HUT32_PrkStraightSts_HUT),
    SIGNAL(QVN_SET_HUT32_PrkStraightModSel_HUT),
    SIGNAL(QVN_SET_HUT32_PrkStraightVehStrtReq_HUT_Valid),
    SIGNAL(QVN_SET_HUT32_PrkStraightStrtReq_HUT),
    SIGNAL(QVN_SET_HUT32_PrkStraightContinueReq_HUT),
    SIGNAL(QVN_SET_HUT32_PrkStraightSuspendOrFinishReq_HUT),
};

const SignalListRow QVN_SET_DMS_FD1_signals[] = {
    SIGNAL(QVN_SET_DMS_FD1_DistrctnLvl_ACC),
    SIGNAL(QVN_SET_DMS_FD1_DrowsnsLvl_ACC),
    SIGNAL(QVN_SET_DMS_FD1_DMSSts),
    SIGNAL(QVN_SET_DMS_FD1_HeadDetn),
    SIGNAL(QVN_SET_DMS_FD1_HeadYawAng),
    SIGNAL(QVN_SET_DMS_FD1_HeadPitchAng),
    SIGNAL(QVN_SET_DMS_FD1_HeadRollAng),
    SIGNAL(QVN_SET_DMS_FD1_HeadPosnX),
    SIGNAL(QVN_SET_DMS_FD1_HeadPosnY),
    SIGNAL(QVN_SET_DMS_FD1_HeadPosnZ),
    SIGNAL(QVN_SET_DMS_FD1_LEyeOpenSts),
    SIGNAL(QVN_SET_DMS_FD1_LEyeOpenStsQlty),
    SIGNAL(QVN_SET_DMS_FD1_REyeOpenSts),
    SIGNAL(QVN_SET_DMS_FD1_REyeOpenStsQlty),
    SIGNAL(QVN_SET_DMS_FD1_RobustGazeYawAng),
    SIGNAL(QVN_SET_DMS_FD1_RobustGazePitchAng),
    SIGNAL(QVN_SET_DMS_FD1_DrvGazeAreaSts),
};

const SignalListRow QVN_SET_HUT_FD4_signals[] = {
    SIGNAL(QVN_SET_HUT_FD4_HUT_HAVP_Return_Btn),
    SIGNAL(QVN_SET_HUT_FD4_HUT_HAVP_Path_Delete),
    SIGNAL(QVN_SET_HUT_FD4_HUT_HAVP_Path_Select),
    SIGNAL(QVN_SET_HUT_FD4_HUT_HAVP_Path_SetTop),
    SIGNAL(QVN_SET_HUT_FD4_HUT_HAVP_APA_Permit),
    SIGNAL(QVN_SET_HUT_FD4_HUT__HAVP_Set_Starting),
    SIGNAL(QVN_SET_HUT_FD4_HUT_HAVP_SelfParLot_Ending),
    SIGNAL(QVN_SET_HUT_FD4_HUT_HAVP_Set_Path_Ending),
    SIGNAL(QVN_SET_HUT_FD4_HUT_PAVP_PathList_Req),
    SIGNAL(QVN_SET_HUT_FD4_HUT_PAVP_DropOff_Area_req),
    SIGNAL(QVN_SET_HUT_FD4_HUT_PAVP_Confirm),
};

const SignalListRow QVN_SET_HUT6_signals[] = {
    SIGNAL(QVN_SET_HUT6_LaneCalActvtCmd),
    SIGNAL(QVN_SET_HUT6_CarMdlDispCmd),
    SIGNAL(QVN_SET_HUT6_Guid_Ovl_Display_Cmd),
    SIGNAL(QVN_SET_HUT6_AutoViewChgCmd),
    SIGNAL(QVN_SET_HUT6_MODChgReq),
    SIGNAL(QVN_SET_HUT6_MEBSwtSet),
    SIGNAL(QVN_SET_HUT6_CarMdlTrsprcySwtCmd),
    SIGNAL(QVN_SET_HUT6_Sgl_View_Sel),
    SIGNAL(QVN_SET_HUT6_Radar_DispCmd),
    SIGNAL(QVN_SET_HUT6_FPAS_AutoModSwt),
    SIGNAL(QVN_SET_HUT6_AutoAVMSwSet_Cmd),
    SIGNAL(QVN_SET_HUT6_View_SoftswitchCmd),
    SIGNAL(QVN_SET_HUT6_WshSoftSwt),
    SIGNAL(QVN_SET_HUT6_SwToFieldCalRstCmd),
};

const SignalListRow QVN_SET_HUT10_signals[] = {
    SIGNAL(QVN_SET_HUT10_PASSwtReq_VR),
};

const SignalListRow QVN_SET_HUT30_signals[] = {
    SIGNAL(QVN_SET_HUT30_BackReq_AVM),
};

const SignalListRow QVN_SET_HUT15_signals[] = {
    SIGNAL(QVN_SET_HUT15_SDWSwtSet),
    SIGNAL(QVN_SET_HUT15_PASExitSpdSwt),
    SIGNAL(QVN_SET_HUT15_APSSwtReq_VR),
    SIGNAL(QVN_SET_HUT15_APSPrkgTypSeln),
};

const SignalListRow QVN_SET_HUT25_signals[] = {
    SIGNAL(QVN_SET_HUT25_CarWashMode_Req),
    SIGNAL(QVN_SET_HUT25_HUT_RemtEngCtrl),
};

const SignalListRow QVN_SET_HUT33_signals[] = {
    SIGNAL(QVN_SET_HUT33_SelPrkgFctnCmd),
    SIGNAL(QVN_SET_HUT33_BackReq_APS),
    SIGNAL(QVN_SET_HUT33_ParkMdlCmd),
    SIGNAL(QVN_SET_HUT33_SelPrkOutDirReq),
    SIGNAL(QVN_SET_HUT33_PathLrngFinshCmd),
    SIGNAL(QVN_SET_HUT33_DeletePath1Cmd),
    SIGNAL(QVN_SET_HUT33_DeletePath2Cmd),
    SIGNAL(QVN_SET_HUT33_PathLrngStartCmd),
    SIGNAL(QVN_SET_HUT33_StartPrkgPath1Cmd),
    SIGNAL(QVN_SET_HUT33_StartPrkgPath2Cmd),
    SIGNAL(QVN_SET_HUT33_P2P_PrkgDirectSwtCmd),
};

#undef PADDED
#undef SIGNAL

namespace qvn {
namespace tables {

#define MESSAGE(name, line) \
    {can_service::name, name##_signals, \
     "[%s][%d]feedbackSignalStatus " #name "  signal id:%d, signal name:%s, property_id:%d, status:%d", line}

constexpr MessageRow kMessageRows[] = {
    //      message          line
    MESSAGE(QVN_GET_CSA2,    404),
    MESSAGE(QVN_GET_ECM_PT7, 887),
    MESSAGE(QVN_GET_ESP_FD2, 565),
    MESSAGE(QVN_GET_HAP_FD1, 611),
    MESSAGE(QVN_GET_CSA1,    841),
    MESSAGE(QVN_GET_EPB1,    864),
    MESSAGE(QVN_GET_R_PBox1, 427),
    MESSAGE(QVN_GET_HCU_HP5, 910),
    MESSAGE(QVN_GET_DCT5,    450),
    MESSAGE(QVN_GET_ABS1,    680),
    MESSAGE(QVN_GET_DCT_FD4, 933),
    MESSAGE(QVN_GET_CSA3,    657),
    MESSAGE(QVN_GET_ABS2,    703),
    MESSAGE(QVN_GET_ECM2,    818),
    MESSAGE(QVN_GET_HAP_FD2, 519),
    MESSAGE(QVN_GET_PEPS2,   749),
    MESSAGE(QVN_GET_HAP_FD3, 542),
    MESSAGE(QVN_GET_HAP_FD7, 795),
    MESSAGE(QVN_GET_BCM8,    634),
    MESSAGE(QVN_GET_ACC_FD2, 772),
    MESSAGE(QVN_GET_HCU_PT4, 588),
    MESSAGE(QVN_GET_PLG_1,   473),
    MESSAGE(QVN_GET_BCM1,    496),
    MESSAGE(QVN_GET_BCM3,    726),
};

#undef MESSAGE

#define MESSAGE(name) {#name, name##_signals}

constexpr SetMessageRow kSetMessageRows[] = {
    MESSAGE(QVN_SET_DMS_FD1),
    MESSAGE(QVN_SET_HUT10),
    MESSAGE(QVN_SET_HUT15),
    MESSAGE(QVN_SET_HUT25),
    MESSAGE(QVN_SET_HUT30),
    MESSAGE(QVN_SET_HUT32),
    MESSAGE(QVN_SET_HUT33),
    MESSAGE(QVN_SET_HUT34),
    MESSAGE(QVN_SET_HUT6),
    MESSAGE(QVN_SET_HUT_FD1),
    MESSAGE(QVN_SET_HUT_FD4),
};

#undef MESSAGE

// clang-format on

constexpr Span<MessageRow> kMessages(kMessageRows);
constexpr Span<SetMessageRow> kSetMessages(kSetMessageRows);

static_assert(firstUnsortedRow(kMessageRows) == kMessages.size(), "messages must be sorted by code");

const MessageRow* findMessage(std::uint32_t code) {
    return findByCode(kMessageRows, code);
}

}  // namespace tables
}  // namespace qvn
