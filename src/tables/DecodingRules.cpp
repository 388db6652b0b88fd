#include "tables/DecodingRules.h"

#include "common.base.canservice.pb.h"
#include "tables/SortedByCode.h"

namespace qvn {
namespace tables {

// clang-format off

// Whether values are logged.
#define LOGGED(name, values) "[%s][%d]" #name values
#define SILENT(name, values) nullptr

#define ROW(name, kind, bytes, factor, unit, direction, format) \
    {can_service::QVN_GET_##name, ValueKind::kind, bytes, factor, unit, direction, format}
#define BYTE(name)                             ROW(name, Integer, 1, 1.0, "", 0, LOGGED(name, " value:%d"))
#define WORD(name)                             ROW(name, Integer, 2, 1.0, "", 0, LOGGED(name, " value:%d"))
#define WHOLE(name, bytes, factor, unit, log)  ROW(name, Integer, bytes, factor, unit, 0, log(name, " value:%d"))
#define SCALED(name, bytes, factor, unit, log) ROW(name, Float, bytes, factor, unit, 0, log(name, " value:%f"))
#define SWITCH(name, direction)                ROW(name, Switch, 1, 1.0, "", direction, LOGGED(name, " value:%d, direct:%d"))

// The background light and audio mute signals feed no property of the shipped tables.
constexpr DecodingRow kDecodingRows[] = {
    //     signal                       bytes factor   unit    log
    BYTE  (T_Box_FD1_T_Box_AudioMuteReq),
    BYTE  (CSA2_SteerWheelAngSign),
    SCALED(CSA2_SteerWheelAng,           2,    0.1,     "deg",  SILENT),
    BYTE  (ECM_PT7_EngState_PHEV),
    BYTE  (ESP_FD2_VehSpdVld),
    SCALED(ESP_FD2_VehSpd,               2,    0.05625, "km/h", LOGGED),
    BYTE  (HAP_FD1_APS_SlotDisp),
    BYTE  (HAP_FD1_APS_SysSoundIndcn),
    BYTE  (HAP_FD1_P2P_Pah1Avail),
    BYTE  (HAP_FD1_TailVertPrkgOutVald),
    BYTE  (HAP_FD1_HeadVertPrkgOutVald),
    BYTE  (HAP_FD1_RParaPrkgOutVald),
    BYTE  (HAP_FD1_LParaPrkgOutVald),
    BYTE  (HAP_FD1_P2P_Pah2Avail),
    BYTE  (HAP_FD1_APS_WorkSts),
    BYTE  (HAP_FD1_P2P_PrkgDirectSts),
    BYTE  (HAP_FD1_APS_ProcBar),
    BYTE  (HAP_FD1_P2P_PahDelSts),
    BYTE  (HAP_FD1_HAP_SwtDispCtrlCmd),
    BYTE  (HAP_FD1_P2P_SelfDetSts),
    BYTE  (HAP_FD1_HAVP_StopBtn_Ena),
    BYTE  (HAP_FD1_HAVP_StartBtn_Ena),
    BYTE  (HAP_FD1_HAVP_SelfParLotEnding_Ena),
    BYTE  (HAP_FD1_PAVP_FuncSts),
    BYTE  (HAP_FD1_AnticlockwiseBtn_Ena),
    BYTE  (HAP_FD1_ClockwiseBtn_Ena),
    BYTE  (HAP_FD1_VerticalSlotBtn_Ena),
    BYTE  (HAP_FD1_ParallelSlotBtn_Ena),
    BYTE  (HAP_FD1_SlotConfirmBtn_Ena),
    BYTE  (HAP_FD1_APS_TextDisp),
    BYTE  (HAP_FD1_HAP_PrkgModCurrSts),
    BYTE  (HAP_FD1_P2P_SelfDetErrCode),
    WORD  (HAP_FD1_APS_ESP_BrkDistance),
    BYTE  (HAP_FD1_HAVP_WorkSts),
    BYTE  (HAP_FD1_PAVP_TextDis),
    BYTE  (CSA1_LTurnLmpSwtSts),
    BYTE  (CSA1_RTurnLmpSwtSts),
    BYTE  (EPB1_EPBSts),
    BYTE  (R_PBox1_RTurnLmpSts_R_Pbox),
    BYTE  (R_PBox1_LTurnLmpSts_R_Pbox),
    BYTE  (HCU_HP5_DrvModDispSts_0x201),
    BYTE  (HCU_HP5_DrvModDisp_0x201),
    BYTE  (DCT5_TGS_LEVER),
    BYTE  (ABS1_FLWheelSpdVld),
    BYTE  (ABS1_FRWheelSpdVld),
    WHOLE (ABS1_FLWheelSpd,              2,    0.05625, "km/h", SILENT),
    WHOLE (ABS1_FRWheelSpd,              2,    0.05625, "km/h", SILENT),
    BYTE  (DCT_FD4_DrvModDispSts_0x236),
    BYTE  (DCT_FD4_DrvModDisp_0x236),
    SWITCH(CSA3_AdjVolDwnSwtSts, 1001),
    SWITCH(CSA3_AdjVolUpSwtSts, 1000),
    SWITCH(CSA3_EnterSwtSts_Mmed, 2004),
    SWITCH(CSA3_SeekDwnSwtSts, 1003),
    SWITCH(CSA3_SeekUpSwtSts, 1002),
    BYTE  (ABS2_RLWheelSpdVld),
    BYTE  (ABS2_RRWheelSpdVld),
    WHOLE (ABS2_RLWheelSpd,              2,    0.05625, "km/h", SILENT),
    WHOLE (ABS2_RRWheelSpd,              2,    0.05625, "km/h", SILENT),
    BYTE  (ECM2_EngState),
    BYTE  (HAP_FD2_AutoAVMSwtSet_Sts),
    BYTE  (HAP_FD2_AutoViewChgFuncSts),
    BYTE  (HAP_FD2_CarMdlDispSts),
    BYTE  (HAP_FD2_MOD_AlarmSts),
    BYTE  (HAP_FD2_MOD_WorkSts),
    BYTE  (HAP_FD2_CurrCalResultSts),
    BYTE  (HAP_FD2_OvlOpFailSts),
    BYTE  (HAP_FD2_EolNotCmpltd),
    BYTE  (HAP_FD2_FrntCamInpFailSts),
    BYTE  (HAP_FD2_RearCamInpFailSts),
    BYTE  (HAP_FD2_LeCamInpFailSts),
    BYTE  (HAP_FD2_RiCamInpFailSts),
    BYTE  (HAP_FD2_HAP_DispCmd),
    BYTE  (HAP_FD2_AVM_CurrSts),
    BYTE  (HAP_FD2_RadarDispSts),
    BYTE  (HAP_FD2_GuidOvlSts),
    BYTE  (HAP_FD2_LaneCalFltSts),
    BYTE  (HAP_FD2_LaneCalSts),
    BYTE  (HAP_FD2_CarMdlTrsprcySts),
    BYTE  (HAP_FD2_SigViewIndcn),
    BYTE  (HAP_FD2_HAP_Hmi_Index),
    WORD  (HAP_FD2_AVM_3DAngSts),
    BYTE  (PEPS2_SysPowerModVld),
    BYTE  (PEPS2_SysPowerMod),
    BYTE  (HAP_FD3_SDWActiveSts),
    BYTE  (HAP_FD3_APS_RLSideSnsrFailSts),
    BYTE  (HAP_FD3_APS_RRSideSnsrFailSts),
    BYTE  (HAP_FD3_APS_FLSideSnsrFailSts),
    BYTE  (HAP_FD3_APS_FRSideSnsrFailSts),
    BYTE  (HAP_FD3_RPAS_NearBrrdstn),
    BYTE  (HAP_FD3_RPAS_RRCornrSnsrFailSts),
    BYTE  (HAP_FD3_RPAS_RRMiddlSnsrFailSts),
    BYTE  (HAP_FD3_RPAS_RLMiddlSnsrFailSts),
    BYTE  (HAP_FD3_RPAS_RLCornrSnsrFailSts),
    BYTE  (HAP_FD3_MEB_EnableSts),
    BYTE  (HAP_FD3_SDW_SoundIndcn),
    BYTE  (HAP_FD3_FPAS_AutoModSts),
    BYTE  (HAP_FD3_FPAS_FRCornrSnsrFailSts),
    BYTE  (HAP_FD3_FPAS_FRMiddlSnsrFailSts),
    BYTE  (HAP_FD3_FPAS_FLMiddlSnsrFailSts),
    BYTE  (HAP_FD3_FPAS_FLCornrSnsrFailSts),
    BYTE  (HAP_FD3_APS_ObjRiSideAr2),
    BYTE  (HAP_FD3_APS_ObjRiSideAr1),
    BYTE  (HAP_FD3_APS_ObjRiSideAr4),
    BYTE  (HAP_FD3_RPAS_WorkSts),
    BYTE  (HAP_FD3_APS_ObjRiSideAr3),
    BYTE  (HAP_FD3_MEBWorkSts),
    BYTE  (HAP_FD3_APS_ObjLeSideAr1),
    BYTE  (HAP_FD3_RPAS_SoundIndcn),
    BYTE  (HAP_FD3_APS_ObjRiSideAr5),
    BYTE  (HAP_FD3_APS_ObjLeSideAr3),
    BYTE  (HAP_FD3_APS_ObjLeSideAr2),
    BYTE  (HAP_FD3_APS_ObjLeSideAr5),
    BYTE  (HAP_FD3_APS_ObjLeSideAr4),
    BYTE  (HAP_FD3_FPAS_WorkSts),
    BYTE  (HAP_FD3_FPAS_SoundIndcn),
    BYTE  (HAP_FD3_FADS_FuncSts),
    BYTE  (HAP_FD3_RADS_FuncSts),
    BYTE  (HAP_FD3_P2P_FuncSts),
    BYTE  (HAP_FD3_APA_FuncSts),
    BYTE  (HAP_FD3_HAP_TextIconDispCtrl),
    BYTE  (HAP_FD3_RPAS_ObjRRCornrAr2),
    BYTE  (HAP_FD3_RPAS_ObjRRCornrAr1),
    BYTE  (HAP_FD3_RPAS_ObjRRMidlAr2),
    BYTE  (HAP_FD3_RPAS_ObjRRMidlAr1),
    BYTE  (HAP_FD3_RPAS_ObjRLMidlAr2),
    BYTE  (HAP_FD3_RPAS_ObjRLMidlAr1),
    BYTE  (HAP_FD3_RPAS_ObjRLCornrAr2),
    BYTE  (HAP_FD3_RPAS_ObjRLCornrAr1),
    BYTE  (HAP_FD3_FPAS_ObjFLCornrAr2),
    BYTE  (HAP_FD3_FPAS_ObjFLCornrAr1),
    BYTE  (HAP_FD3_FPAS_ObjFLMidlAr2),
    BYTE  (HAP_FD3_FPAS_ObjFLMidlAr1),
    BYTE  (HAP_FD3_FPAS_ObjFRMidlAr2),
    BYTE  (HAP_FD3_FPAS_ObjFRMidlAr1),
    BYTE  (HAP_FD3_FPAS_ObjFRCornrAr2),
    BYTE  (HAP_FD3_FPAS_ObjFRCornrAr1),
    BYTE  (HAP_FD3_FPAS_NearBrrdstn),
    BYTE  (HAP_FD3_APA_MenuDispCtrlCmd),
    BYTE  (HAP_FD7_HAVP_HUT_TextDisp),
    BYTE  (HAP_FD7_HAVP_ScFail_info),
    BYTE  (HAP_FD7_PAVP_ScFail_info),
    BYTE  (HAP_FD7_HAVP_LrngDst),
    BYTE  (BCM8_PASWorkCmd),
    BYTE  (BCM8_RemoteModSts),
    BYTE  (BCM8_RViewMirrorSts),
    BYTE  (ACC_FD2_HWA_ModDisp),
    BYTE  (HCU_PT4_CarWashMode_StsDisp),
    BYTE  (PLG_1_PLG_Sts),
    BYTE  (BCM1_RRDoorSts),
    BYTE  (BCM1_PassengerDoorSts),
    BYTE  (BCM1_LRDoorSts),
    BYTE  (BCM1_DrvDoorSts),
    BYTE  (BCM1_TrunkSts),
    BYTE  (BCM1_BackgroundLightLvl),
    BYTE  (BCM3_DoorLockSts),
    BYTE  (BCM3_LasHdLmpSts),
};

#undef SWITCH
#undef SCALED
#undef WHOLE
#undef WORD
#undef BYTE
#undef ROW
#undef SILENT
#undef LOGGED

// clang-format on

constexpr Span<DecodingRow> kDecodingRules(kDecodingRows);

static_assert(firstUnsortedRow(kDecodingRows) == kDecodingRules.size(), "decoding rules must be sorted by code");

const DecodingRow* findDecodingRule(std::uint32_t code) {
    return findByCode(kDecodingRows, code);
}

}  // namespace tables
}  // namespace qvn
