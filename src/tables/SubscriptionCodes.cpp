#include "tables/SubscriptionCodes.h"

#include "common.base.canservice.pb.h"

namespace qvn {
namespace tables {

// clang-format off

#define CODE(name) can_service::QVN_GET_##name

// The order is a contract: the service answers a subscription in this order, so an application gets its first values in
// it. It follows from no other table: the signal table has another order, and the signal lists are sorted by message.
constexpr std::uint32_t kCodes[] = {
    // Signals, a row for each run of one message.
    CODE(CSA2_SteerWheelAng),
    CODE(R_PBox1_LTurnLmpSts_R_Pbox), CODE(R_PBox1_RTurnLmpSts_R_Pbox),
    CODE(DCT5_TGS_LEVER),
    CODE(PLG_1_PLG_Sts),
    CODE(BCM1_DrvDoorSts), CODE(BCM1_LRDoorSts), CODE(BCM1_PassengerDoorSts), CODE(BCM1_RRDoorSts),
    CODE(HAP_FD2_RadarDispSts),
    CODE(HAP_FD3_FPAS_FLCornrSnsrFailSts), CODE(HAP_FD3_FPAS_FLMiddlSnsrFailSts), CODE(HAP_FD3_FPAS_FRMiddlSnsrFailSts),
        CODE(HAP_FD3_FPAS_FRCornrSnsrFailSts), CODE(HAP_FD3_RPAS_RLCornrSnsrFailSts),
        CODE(HAP_FD3_RPAS_RLMiddlSnsrFailSts), CODE(HAP_FD3_RPAS_RRMiddlSnsrFailSts),
        CODE(HAP_FD3_RPAS_RRCornrSnsrFailSts), CODE(HAP_FD3_APS_FRSideSnsrFailSts), CODE(HAP_FD3_APS_FLSideSnsrFailSts),
        CODE(HAP_FD3_APS_RRSideSnsrFailSts), CODE(HAP_FD3_APS_RLSideSnsrFailSts),
    CODE(HAP_FD2_LaneCalSts),
    CODE(ESP_FD2_VehSpd), CODE(ESP_FD2_VehSpdVld),
    CODE(CSA2_SteerWheelAngSign),
    CODE(HAP_FD2_CarMdlDispSts), CODE(HAP_FD2_SigViewIndcn), CODE(HAP_FD2_GuidOvlSts), CODE(HAP_FD2_MOD_WorkSts),
        CODE(HAP_FD2_MOD_AlarmSts), CODE(HAP_FD2_CarMdlTrsprcySts),
    CODE(HCU_PT4_CarWashMode_StsDisp),
    CODE(HAP_FD1_P2P_PahDelSts), CODE(HAP_FD1_P2P_SelfDetErrCode), CODE(HAP_FD1_P2P_SelfDetSts),
        CODE(HAP_FD1_P2P_Pah1Avail), CODE(HAP_FD1_P2P_Pah2Avail), CODE(HAP_FD1_HAP_PrkgModCurrSts),
    CODE(HAP_FD2_HAP_Hmi_Index),
    CODE(HAP_FD1_APS_WorkSts),
    CODE(HAP_FD3_RADS_FuncSts), CODE(HAP_FD3_APA_MenuDispCtrlCmd),
    CODE(HAP_FD1_HAP_SwtDispCtrlCmd), CODE(HAP_FD1_APS_TextDisp),
    CODE(HAP_FD3_FADS_FuncSts),
    CODE(BCM8_PASWorkCmd),
    CODE(HAP_FD3_FPAS_AutoModSts), CODE(HAP_FD3_SDWActiveSts),
    CODE(CSA3_SeekUpSwtSts), CODE(CSA3_SeekDwnSwtSts), CODE(CSA3_AdjVolUpSwtSts), CODE(CSA3_AdjVolDwnSwtSts),
        CODE(CSA3_EnterSwtSts_Mmed),
    CODE(HAP_FD2_FrntCamInpFailSts), CODE(HAP_FD2_RearCamInpFailSts), CODE(HAP_FD2_LeCamInpFailSts),
        CODE(HAP_FD2_RiCamInpFailSts), CODE(HAP_FD2_OvlOpFailSts), CODE(HAP_FD2_AVM_CurrSts), CODE(HAP_FD2_HAP_DispCmd),
    CODE(ABS1_FLWheelSpdVld), CODE(ABS1_FLWheelSpd), CODE(ABS1_FRWheelSpdVld), CODE(ABS1_FRWheelSpd),
    CODE(ABS2_RLWheelSpdVld), CODE(ABS2_RLWheelSpd), CODE(ABS2_RRWheelSpdVld), CODE(ABS2_RRWheelSpd),
    CODE(HAP_FD3_APS_ObjRiSideAr1), CODE(HAP_FD3_APS_ObjRiSideAr2), CODE(HAP_FD3_APS_ObjRiSideAr3),
        CODE(HAP_FD3_APS_ObjRiSideAr4), CODE(HAP_FD3_APS_ObjRiSideAr5), CODE(HAP_FD3_APS_ObjLeSideAr1),
        CODE(HAP_FD3_APS_ObjLeSideAr2), CODE(HAP_FD3_APS_ObjLeSideAr3), CODE(HAP_FD3_APS_ObjLeSideAr4),
        CODE(HAP_FD3_APS_ObjLeSideAr5), CODE(HAP_FD3_RPAS_ObjRRCornrAr1), CODE(HAP_FD3_RPAS_ObjRRCornrAr2),
        CODE(HAP_FD3_RPAS_ObjRRMidlAr1), CODE(HAP_FD3_RPAS_ObjRRMidlAr2), CODE(HAP_FD3_RPAS_ObjRLMidlAr1),
        CODE(HAP_FD3_RPAS_ObjRLMidlAr2), CODE(HAP_FD3_RPAS_ObjRLCornrAr1), CODE(HAP_FD3_RPAS_ObjRLCornrAr2),
        CODE(HAP_FD3_FPAS_ObjFLCornrAr1), CODE(HAP_FD3_FPAS_ObjFLCornrAr2), CODE(HAP_FD3_FPAS_ObjFLMidlAr1),
        CODE(HAP_FD3_FPAS_ObjFLMidlAr2), CODE(HAP_FD3_FPAS_ObjFRMidlAr1), CODE(HAP_FD3_FPAS_ObjFRMidlAr2),
        CODE(HAP_FD3_FPAS_ObjFRCornrAr1), CODE(HAP_FD3_FPAS_ObjFRCornrAr2), CODE(HAP_FD3_MEBWorkSts),
        CODE(HAP_FD3_MEB_EnableSts),
    CODE(BCM3_LasHdLmpSts),
    CODE(BCM1_TrunkSts),
    CODE(HAP_FD3_RPAS_SoundIndcn), CODE(HAP_FD3_FPAS_SoundIndcn), CODE(HAP_FD3_SDW_SoundIndcn),
    CODE(HAP_FD1_APS_SysSoundIndcn),
    CODE(HAP_FD2_AutoAVMSwtSet_Sts), CODE(HAP_FD2_AutoViewChgFuncSts),
    CODE(HAP_FD3_FPAS_WorkSts), CODE(HAP_FD3_RPAS_WorkSts), CODE(HAP_FD3_HAP_TextIconDispCtrl),
        CODE(HAP_FD3_APA_FuncSts),
    CODE(HAP_FD1_LParaPrkgOutVald), CODE(HAP_FD1_RParaPrkgOutVald), CODE(HAP_FD1_HeadVertPrkgOutVald),
        CODE(HAP_FD1_TailVertPrkgOutVald), CODE(HAP_FD1_APS_SlotDisp),
    CODE(PEPS2_SysPowerMod),
    CODE(HAP_FD2_EolNotCmpltd), CODE(HAP_FD2_LaneCalFltSts), CODE(HAP_FD2_CurrCalResultSts),
    CODE(HAP_FD3_P2P_FuncSts), CODE(HAP_FD3_FPAS_NearBrrdstn), CODE(HAP_FD3_RPAS_NearBrrdstn),
    CODE(HAP_FD1_APS_ProcBar),
    CODE(HAP_FD2_AVM_3DAngSts),
    CODE(ACC_FD2_HWA_ModDisp),
    CODE(BCM8_RViewMirrorSts),
    CODE(HAP_FD1_HAVP_WorkSts),
    CODE(HAP_FD7_HAVP_LrngDst), CODE(HAP_FD7_HAVP_HUT_TextDisp), CODE(HAP_FD7_HAVP_ScFail_info),
    CODE(HAP_FD1_HAVP_StartBtn_Ena), CODE(HAP_FD1_HAVP_StopBtn_Ena), CODE(HAP_FD1_HAVP_SelfParLotEnding_Ena),
        CODE(HAP_FD1_PAVP_FuncSts), CODE(HAP_FD1_PAVP_TextDis),
    CODE(HAP_FD7_PAVP_ScFail_info),
    CODE(ECM2_EngState),
    CODE(HAP_FD1_P2P_PrkgDirectSts),
    CODE(CSA1_LTurnLmpSwtSts), CODE(CSA1_RTurnLmpSwtSts),
    CODE(EPB1_EPBSts),
    CODE(ECM_PT7_EngState_PHEV),
    CODE(PEPS2_SysPowerModVld),
    CODE(BCM3_DoorLockSts),
    CODE(BCM8_RemoteModSts),
    CODE(HAP_FD1_ParallelSlotBtn_Ena), CODE(HAP_FD1_VerticalSlotBtn_Ena), CODE(HAP_FD1_ClockwiseBtn_Ena),
        CODE(HAP_FD1_AnticlockwiseBtn_Ena), CODE(HAP_FD1_SlotConfirmBtn_Ena), CODE(HAP_FD1_APS_ESP_BrkDistance),
    CODE(HCU_HP5_DrvModDispSts_0x201), CODE(HCU_HP5_DrvModDisp_0x201),
    CODE(DCT_FD4_DrvModDispSts_0x236), CODE(DCT_FD4_DrvModDisp_0x236),
    // Whole messages.
    CODE(CSA2), CODE(R_PBox1), CODE(DCT5), CODE(PLG_1), CODE(BCM1), CODE(HAP_FD2), CODE(HAP_FD3), CODE(ESP_FD2),
    CODE(HCU_PT4), CODE(HAP_FD1), CODE(BCM8), CODE(CSA3), CODE(ABS1), CODE(ABS2), CODE(BCM3), CODE(PEPS2),
    CODE(ACC_FD2), CODE(HAP_FD7), CODE(ECM2), CODE(CSA1), CODE(EPB1), CODE(ECM_PT7), CODE(HCU_HP5), CODE(DCT_FD4),
};

#undef CODE

// clang-format on

constexpr Span<std::uint32_t> kSubscriptionCodes(kCodes);

}  // namespace tables
}  // namespace qvn
