// Made from the tables by scripts/generate; do not edit.
#ifndef VEHICLE_PROPERTY_IDS_H
#define VEHICLE_PROPERTY_IDS_H

#include <vehicle/VehicleProperty.h>

namespace qvn {
namespace platform {
namespace vehicle {

/// The identifier of every property, under the name of each signal that feeds it or is set by it. The remark tells
/// where the payload lies, its unit, and the CAN message. The five steering-wheel switches of CSA3 share one property.
namespace ids {

// One signal's own name has two underscores in a row.
// NOLINTBEGIN(bugprone-reserved-identifier)
// clang-format off

// What the vehicle reports.
constexpr int CSA2_SteerWheelAng                       = 0x21600E24;  // floatValues, deg, CSA2
constexpr int R_PBox1_LTurnLmpSts_R_Pbox               = 0x21404030;  // int32Values, R_PBox1
constexpr int R_PBox1_RTurnLmpSts_R_Pbox               = 0x2140382E;  // int32Values, R_PBox1
constexpr int DCT5_TGS_LEVER                           = 0x21402622;  // int32Values, DCT5
constexpr int PLG_1_PLG_Sts                            = 0x2140306E;  // int32Values, PLG_1
constexpr int BCM1_DrvDoorSts                          = 0x21400E20;  // int32Values, BCM1
constexpr int BCM1_LRDoorSts                           = 0x21400E22;  // int32Values, BCM1
constexpr int BCM1_PassengerDoorSts                    = 0x21400E21;  // int32Values, BCM1
constexpr int BCM1_RRDoorSts                           = 0x21400E23;  // int32Values, BCM1
constexpr int HAP_FD2_RadarDispSts                     = 0x214053AF;  // int32Values, HAP_FD2
constexpr int HAP_FD3_FPAS_FLCornrSnsrFailSts          = 0x2140305D;  // int32Values, HAP_FD3
constexpr int HAP_FD3_FPAS_FLMiddlSnsrFailSts          = 0x2140305E;  // int32Values, HAP_FD3
constexpr int HAP_FD3_FPAS_FRMiddlSnsrFailSts          = 0x2140305F;  // int32Values, HAP_FD3
constexpr int HAP_FD3_FPAS_FRCornrSnsrFailSts          = 0x21403060;  // int32Values, HAP_FD3
constexpr int HAP_FD3_RPAS_RLCornrSnsrFailSts          = 0x21403059;  // int32Values, HAP_FD3
constexpr int HAP_FD3_RPAS_RLMiddlSnsrFailSts          = 0x2140305A;  // int32Values, HAP_FD3
constexpr int HAP_FD3_RPAS_RRMiddlSnsrFailSts          = 0x2140305B;  // int32Values, HAP_FD3
constexpr int HAP_FD3_RPAS_RRCornrSnsrFailSts          = 0x2140305C;  // int32Values, HAP_FD3
constexpr int HAP_FD3_APS_FLSideSnsrFailSts            = 0x21403056;  // int32Values, HAP_FD3
constexpr int HAP_FD3_APS_FRSideSnsrFailSts            = 0x21403055;  // int32Values, HAP_FD3
constexpr int HAP_FD3_APS_RLSideSnsrFailSts            = 0x21403058;  // int32Values, HAP_FD3
constexpr int HAP_FD3_APS_RRSideSnsrFailSts            = 0x21403057;  // int32Values, HAP_FD3
constexpr int HAP_FD2_LaneCalSts                       = 0x21401C25;  // int32Values, HAP_FD2
constexpr int ESP_FD2_VehSpd                           = 0x21600E1F;  // floatValues, km/h, ESP_FD2
constexpr int ESP_FD2_VehSpdVld                        = 0x2140201E;  // int32Values, ESP_FD2
constexpr int CSA2_SteerWheelAngSign                   = 0x21400E25;  // int32Values, CSA2
constexpr int HAP_FD2_CarMdlDispSts                    = 0x214053B2;  // int32Values, HAP_FD2
constexpr int HAP_FD2_SigViewIndcn                     = 0x214053B5;  // int32Values, HAP_FD2
constexpr int HAP_FD2_GuidOvlSts                       = 0x214053AD;  // int32Values, HAP_FD2
constexpr int HAP_FD2_MOD_WorkSts                      = 0x21403037;  // int32Values, HAP_FD2
constexpr int HAP_FD2_MOD_AlarmSts                     = 0x21403038;  // int32Values, HAP_FD2
constexpr int HAP_FD2_CarMdlTrsprcySts                 = 0x214053B1;  // int32Values, HAP_FD2
constexpr int HAP_FD1_P2P_PahDelSts                    = 0x21403043;  // int32Values, HAP_FD1
constexpr int HAP_FD1_P2P_SelfDetErrCode               = 0x21403044;  // int32Values, HAP_FD1
constexpr int HAP_FD1_P2P_SelfDetSts                   = 0x21403045;  // int32Values, HAP_FD1
constexpr int HAP_FD1_P2P_Pah1Avail                    = 0x21403046;  // int32Values, HAP_FD1
constexpr int HAP_FD1_P2P_Pah2Avail                    = 0x21403047;  // int32Values, HAP_FD1
constexpr int HAP_FD1_HAP_PrkgModCurrSts               = 0x2140304F;  // int32Values, HAP_FD1
constexpr int HAP_FD2_HAP_Hmi_Index                    = 0x2140303C;  // int32Values, HAP_FD2
constexpr int HAP_FD1_APS_WorkSts                      = 0x2140303D;  // int32Values, HAP_FD1
constexpr int HAP_FD3_RADS_FuncSts                     = 0x2140306F;  // int32Values, HAP_FD3
constexpr int HAP_FD3_APA_MenuDispCtrlCmd              = 0x21403040;  // int32Values, HAP_FD3
constexpr int HAP_FD1_HAP_SwtDispCtrlCmd               = 0x21403075;  // int32Values, HAP_FD1
constexpr int HAP_FD1_APS_TextDisp                     = 0x21403042;  // int32Values, HAP_FD1
constexpr int HAP_FD3_FADS_FuncSts                     = 0x2140303F;  // int32Values, HAP_FD3
constexpr int BCM8_PASWorkCmd                          = 0x2140307A;  // int32Values, BCM8
constexpr int HAP_FD3_FPAS_AutoModSts                  = 0x214053BD;  // int32Values, HAP_FD3
constexpr int HAP_FD3_SDWActiveSts                     = 0x214053B9;  // int32Values, HAP_FD3
constexpr int CSA3_SeekUpSwtSts                        = 0x11410A10;  // int32Values, then 1002, CSA3
constexpr int CSA3_SeekDwnSwtSts                       = 0x11410A10;  // int32Values, then 1003, CSA3
constexpr int CSA3_AdjVolUpSwtSts                      = 0x11410A10;  // int32Values, then 1000, CSA3
constexpr int CSA3_AdjVolDwnSwtSts                     = 0x11410A10;  // int32Values, then 1001, CSA3
constexpr int CSA3_EnterSwtSts_Mmed                    = 0x11410A10;  // int32Values, then 2004, CSA3
constexpr int HAP_FD2_FrntCamInpFailSts                = 0x21403070;  // int32Values, HAP_FD2
constexpr int HAP_FD2_RearCamInpFailSts                = 0x21403071;  // int32Values, HAP_FD2
constexpr int HAP_FD2_LeCamInpFailSts                  = 0x21403072;  // int32Values, HAP_FD2
constexpr int HAP_FD2_RiCamInpFailSts                  = 0x21403073;  // int32Values, HAP_FD2
constexpr int HAP_FD2_OvlOpFailSts                     = 0x21403074;  // int32Values, HAP_FD2
constexpr int HAP_FD2_AVM_CurrSts                      = 0x2140307B;  // int32Values, HAP_FD2
constexpr int HAP_FD2_HAP_DispCmd                      = 0x2140307C;  // int32Values, HAP_FD2
constexpr int ABS1_FLWheelSpdVld                       = 0x21403061;  // int32Values, ABS1
constexpr int ABS1_FLWheelSpd                          = 0x21603062;  // int32Values, km/h, ABS1
constexpr int ABS1_FRWheelSpdVld                       = 0x21403063;  // int32Values, ABS1
constexpr int ABS1_FRWheelSpd                          = 0x21603064;  // int32Values, km/h, ABS1
constexpr int ABS2_RLWheelSpdVld                       = 0x21403065;  // int32Values, ABS2
constexpr int ABS2_RLWheelSpd                          = 0x21603066;  // int32Values, km/h, ABS2
constexpr int ABS2_RRWheelSpdVld                       = 0x21403067;  // int32Values, ABS2
constexpr int ABS2_RRWheelSpd                          = 0x21603068;  // int32Values, km/h, ABS2
constexpr int HAP_FD3_APS_ObjRiSideAr1                 = 0x21403087;  // int32Values, HAP_FD3
constexpr int HAP_FD3_APS_ObjRiSideAr2                 = 0x21403088;  // int32Values, HAP_FD3
constexpr int HAP_FD3_APS_ObjRiSideAr3                 = 0x21403089;  // int32Values, HAP_FD3
constexpr int HAP_FD3_APS_ObjRiSideAr4                 = 0x2140308A;  // int32Values, HAP_FD3
constexpr int HAP_FD3_APS_ObjRiSideAr5                 = 0x2140308B;  // int32Values, HAP_FD3
constexpr int HAP_FD3_APS_ObjLeSideAr1                 = 0x2140308C;  // int32Values, HAP_FD3
constexpr int HAP_FD3_APS_ObjLeSideAr2                 = 0x2140308D;  // int32Values, HAP_FD3
constexpr int HAP_FD3_APS_ObjLeSideAr3                 = 0x2140308E;  // int32Values, HAP_FD3
constexpr int HAP_FD3_APS_ObjLeSideAr4                 = 0x2140308F;  // int32Values, HAP_FD3
constexpr int HAP_FD3_APS_ObjLeSideAr5                 = 0x21403090;  // int32Values, HAP_FD3
constexpr int HAP_FD3_RPAS_ObjRRCornrAr1               = 0x21403091;  // int32Values, HAP_FD3
constexpr int HAP_FD3_RPAS_ObjRRCornrAr2               = 0x21403092;  // int32Values, HAP_FD3
constexpr int HAP_FD3_RPAS_ObjRRMidlAr1                = 0x21403093;  // int32Values, HAP_FD3
constexpr int HAP_FD3_RPAS_ObjRRMidlAr2                = 0x21403094;  // int32Values, HAP_FD3
constexpr int HAP_FD3_RPAS_ObjRLMidlAr1                = 0x21403095;  // int32Values, HAP_FD3
constexpr int HAP_FD3_RPAS_ObjRLMidlAr2                = 0x21403096;  // int32Values, HAP_FD3
constexpr int HAP_FD3_RPAS_ObjRLCornrAr1               = 0x21403097;  // int32Values, HAP_FD3
constexpr int HAP_FD3_RPAS_ObjRLCornrAr2               = 0x21403098;  // int32Values, HAP_FD3
constexpr int HAP_FD3_FPAS_ObjFLCornrAr1               = 0x21403099;  // int32Values, HAP_FD3
constexpr int HAP_FD3_FPAS_ObjFLCornrAr2               = 0x2140309A;  // int32Values, HAP_FD3
constexpr int HAP_FD3_FPAS_ObjFLMidlAr1                = 0x2140309B;  // int32Values, HAP_FD3
constexpr int HAP_FD3_FPAS_ObjFLMidlAr2                = 0x2140309C;  // int32Values, HAP_FD3
constexpr int HAP_FD3_FPAS_ObjFRMidlAr1                = 0x2140309D;  // int32Values, HAP_FD3
constexpr int HAP_FD3_FPAS_ObjFRMidlAr2                = 0x2140309E;  // int32Values, HAP_FD3
constexpr int HAP_FD3_FPAS_ObjFRCornrAr1               = 0x2140309F;  // int32Values, HAP_FD3
constexpr int HAP_FD3_FPAS_ObjFRCornrAr2               = 0x214030A0;  // int32Values, HAP_FD3
constexpr int HAP_FD3_MEBWorkSts                       = 0x2140304B;  // int32Values, HAP_FD3
constexpr int HAP_FD3_MEB_EnableSts                    = 0x2140304C;  // int32Values, HAP_FD3
constexpr int BCM3_LasHdLmpSts                         = 0x21403069;  // int32Values, BCM3
constexpr int HCU_PT4_CarWashMode_StsDisp              = 0x21403048;  // int32Values, HCU_PT4
constexpr int BCM1_TrunkSts                            = 0x2140302E;  // int32Values, BCM1
constexpr int HAP_FD3_RPAS_SoundIndcn                  = 0x214053BB;  // int32Values, HAP_FD3
constexpr int HAP_FD3_FPAS_SoundIndcn                  = 0x214053BE;  // int32Values, HAP_FD3
constexpr int HAP_FD3_SDW_SoundIndcn                   = 0x214053B8;  // int32Values, HAP_FD3
constexpr int HAP_FD1_APS_SysSoundIndcn                = 0x214053A4;  // int32Values, HAP_FD1
constexpr int HAP_FD2_AutoAVMSwtSet_Sts                = 0x214053AC;  // int32Values, HAP_FD2
constexpr int HAP_FD2_AutoViewChgFuncSts               = 0x214053B0;  // int32Values, HAP_FD2
constexpr int HAP_FD3_FPAS_WorkSts                     = 0x214053BC;  // int32Values, HAP_FD3
constexpr int HAP_FD3_RPAS_WorkSts                     = 0x214053BA;  // int32Values, HAP_FD3
constexpr int HAP_FD3_HAP_TextIconDispCtrl             = 0x214053C1;  // int32Values, HAP_FD3
constexpr int HAP_FD3_APA_FuncSts                      = 0x214053C0;  // int32Values, HAP_FD3
constexpr int HAP_FD1_LParaPrkgOutVald                 = 0x214053A7;  // int32Values, HAP_FD1
constexpr int HAP_FD1_RParaPrkgOutVald                 = 0x214053A8;  // int32Values, HAP_FD1
constexpr int HAP_FD1_HeadVertPrkgOutVald              = 0x214053A9;  // int32Values, HAP_FD1
constexpr int HAP_FD1_TailVertPrkgOutVald              = 0x214053AA;  // int32Values, HAP_FD1
constexpr int HAP_FD1_APS_SlotDisp                     = 0x214053A3;  // int32Values, HAP_FD1
constexpr int PEPS2_SysPowerMod                        = 0x21403837;  // int32Values, PEPS2
constexpr int HAP_FD2_EolNotCmpltd                     = 0x214053AE;  // int32Values, HAP_FD2
constexpr int HAP_FD2_LaneCalFltSts                    = 0x21401C26;  // int32Values, HAP_FD2
constexpr int HAP_FD2_CurrCalResultSts                 = 0x214053B3;  // int32Values, HAP_FD2
constexpr int HAP_FD3_P2P_FuncSts                      = 0x2140307E;  // int32Values, HAP_FD3
constexpr int HAP_FD3_FPAS_NearBrrdstn                 = 0x214053BF;  // int32Values, HAP_FD3
constexpr int HAP_FD3_RPAS_NearBrrdstn                 = 0x214053B7;  // int32Values, HAP_FD3
constexpr int HAP_FD1_APS_ProcBar                      = 0x214053A1;  // int32Values, HAP_FD1
constexpr int HAP_FD2_AVM_3DAngSts                     = 0x214053B6;  // int32Values, HAP_FD2
constexpr int ACC_FD2_HWA_ModDisp                      = 0x21401271;  // int32Values, ACC_FD2
constexpr int BCM8_RViewMirrorSts                      = 0x2140182B;  // int32Values, BCM8
constexpr int HAP_FD1_HAVP_WorkSts                     = 0x214054EC;  // int32Values, HAP_FD1
constexpr int HAP_FD7_HAVP_LrngDst                     = 0x21405539;  // int32Values, HAP_FD7
constexpr int HAP_FD7_HAVP_HUT_TextDisp                = 0x2140553A;  // int32Values, HAP_FD7
constexpr int HAP_FD7_HAVP_ScFail_info                 = 0x2140553B;  // int32Values, HAP_FD7
constexpr int HAP_FD1_HAVP_StartBtn_Ena                = 0x214054E9;  // int32Values, HAP_FD1
constexpr int HAP_FD1_HAVP_StopBtn_Ena                 = 0x214054EA;  // int32Values, HAP_FD1
constexpr int HAP_FD1_HAVP_SelfParLotEnding_Ena        = 0x214054EB;  // int32Values, HAP_FD1
constexpr int HAP_FD1_PAVP_FuncSts                     = 0x214054EE;  // int32Values, HAP_FD1
constexpr int HAP_FD1_PAVP_TextDis                     = 0x214054EF;  // int32Values, HAP_FD1
constexpr int HAP_FD7_PAVP_ScFail_info                 = 0x2140553C;  // int32Values, HAP_FD7
constexpr int ECM2_EngState                            = 0x2140402F;  // int32Values, ECM2
constexpr int HAP_FD1_P2P_PrkgDirectSts                = 0x214053A6;  // int32Values, HAP_FD1
constexpr int CSA1_LTurnLmpSwtSts                      = 0x21406330;  // int32Values, CSA1
constexpr int CSA1_RTurnLmpSwtSts                      = 0x21406331;  // int32Values, CSA1
constexpr int EPB1_EPBSts                              = 0x21405433;  // int32Values, EPB1
constexpr int ECM_PT7_EngState_PHEV                    = 0x2140502F;  // int32Values, ECM_PT7
constexpr int PEPS2_SysPowerModVld                     = 0x21403838;  // int32Values, PEPS2
constexpr int BCM3_DoorLockSts                         = 0x2140182C;  // int32Values, BCM3
constexpr int BCM8_RemoteModSts                        = 0x21404A2E;  // int32Values, BCM8
constexpr int HAP_FD1_ParallelSlotBtn_Ena              = 0x214054F2;  // int32Values, HAP_FD1
constexpr int HAP_FD1_VerticalSlotBtn_Ena              = 0x214054F3;  // int32Values, HAP_FD1
constexpr int HAP_FD1_ClockwiseBtn_Ena                 = 0x214054F4;  // int32Values, HAP_FD1
constexpr int HAP_FD1_AnticlockwiseBtn_Ena             = 0x214054F5;  // int32Values, HAP_FD1
constexpr int HAP_FD1_SlotConfirmBtn_Ena               = 0x214054F6;  // int32Values, HAP_FD1
constexpr int HAP_FD1_APS_ESP_BrkDistance              = 0x21008247;  // int32Values, HAP_FD1
constexpr int HCU_HP5_DrvModDispSts_0x201              = 0x21405489;  // int32Values, HCU_HP5
constexpr int HCU_HP5_DrvModDisp_0x201                 = 0x21405488;  // int32Values, HCU_HP5
constexpr int DCT_FD4_DrvModDispSts_0x236              = 0x2140202B;  // int32Values, DCT_FD4
constexpr int DCT_FD4_DrvModDisp_0x236                 = 0x21400E1E;  // int32Values, DCT_FD4

// What can be set.
constexpr int HUT6_LaneCalActvtCmd                     = 0x21401C23;  // int32Values, HUT6
constexpr int HUT6_CarMdlDispCmd                       = 0x21403033;  // int32Values, HUT6
constexpr int HUT6_Guid_Ovl_Display_Cmd                = 0x21403034;  // int32Values, HUT6
constexpr int HUT6_AutoViewChgCmd                      = 0x2140304A;  // int32Values, HUT6
constexpr int HUT6_MODChgReq                           = 0x21403036;  // int32Values, HUT6
constexpr int HUT6_MEBSwtSet                           = 0x21401C1F;  // int32Values, HUT6
constexpr int HUT6_CarMdlTrsprcySwtCmd                 = 0x2140303B;  // int32Values, HUT6
constexpr int HUT6_Sgl_View_Sel                        = 0x2140307D;  // int32Values, HUT6
constexpr int HUT6_Radar_DispCmd                       = 0x21403050;  // int32Values, HUT6
constexpr int HUT32_PrkgCtrlModReq                     = 0x2140304E;  // int32Values, HUT32
constexpr int HUT32_PrkgCtrlModReqValid                = 0x2140304D;  // int32Values, HUT32
constexpr int HUT33_SelPrkgFctnCmd                     = 0x2140303E;  // int32Values, HUT33
constexpr int HUT32_DetVideoLost                       = 0x21403041;  // int32Values, HUT32
constexpr int HUT10_PASSwtReq_VR                       = 0x2140423C;  // int32Values, HUT10
constexpr int HUT6_FPAS_AutoModSwt                     = 0x21401C1E;  // int32Values, HUT6
constexpr int HUT15_SDWSwtSet                          = 0x21401C20;  // int32Values, HUT15
constexpr int HUT_FD1_HFASwtSts                        = 0x21401824;  // int32Values, HUT_FD1
constexpr int HUT15_PASExitSpdSwt                      = 0x21401C22;  // int32Values, HUT15
constexpr int HUT6_AutoAVMSwSet_Cmd                    = 0x21401C21;  // int32Values, HUT6
constexpr int HUT6_View_SoftswitchCmd                  = 0x21403035;  // int32Values, HUT6
constexpr int HUT6_WshSoftSwt                          = 0x21405265;  // int32Values, HUT6
constexpr int HUT32_ScrnOpSts                          = 0x21405275;  // int32Values, HUT32
constexpr int HUT32_XLvl                               = 0x21405276;  // int32Values, HUT32
constexpr int HUT32_YLvl                               = 0x21405277;  // int32Values, HUT32
constexpr int HUT33_BackReq_APS                        = 0x21405283;  // int32Values, HUT33
constexpr int HUT15_APSSwtReq_VR                       = 0x2140423E;  // int32Values, HUT15
constexpr int HUT33_ParkMdlCmd                         = 0x21405282;  // int32Values, HUT33
constexpr int HUT32_ContnPrkgReq                       = 0x21405279;  // int32Values, HUT32
constexpr int HUT32_ContnPrkgReqValid                  = 0x21405278;  // int32Values, HUT32
constexpr int HUT33_SelPrkOutDirReq                    = 0x2140527D;  // int32Values, HUT33
constexpr int HUT33_PathLrngFinshCmd                   = 0x2140527B;  // int32Values, HUT33
constexpr int HUT15_APSPrkgTypSeln                     = 0x21405267;  // int32Values, HUT15
constexpr int HUT30_BackReq_AVM                        = 0x21405274;  // int32Values, HUT30
constexpr int HUT6_SwToFieldCalRstCmd                  = 0x21401C24;  // int32Values, HUT6
constexpr int HUT33_DeletePath1Cmd                     = 0x21405281;  // int32Values, HUT33
constexpr int HUT33_DeletePath2Cmd                     = 0x2140527F;  // int32Values, HUT33
constexpr int HUT33_PathLrngStartCmd                   = 0x2140527C;  // int32Values, HUT33
constexpr int HUT33_StartPrkgPath1Cmd                  = 0x21405280;  // int32Values, HUT33
constexpr int HUT33_StartPrkgPath2Cmd                  = 0x2140527E;  // int32Values, HUT33
constexpr int DMS_FD1_DistrctnLvl_ACC                  = 0x2100822E;  // int32Values, DMS_FD1
constexpr int DMS_FD1_DrowsnsLvl_ACC                   = 0x2100822F;  // int32Values, DMS_FD1
constexpr int DMS_FD1_DMSSts                           = 0x21008230;  // int32Values, DMS_FD1
constexpr int DMS_FD1_HeadDetn                         = 0x21008231;  // int32Values, DMS_FD1
constexpr int DMS_FD1_HeadYawAng                       = 0x21008232;  // int32Values, DMS_FD1
constexpr int DMS_FD1_HeadPitchAng                     = 0x21008233;  // int32Values, DMS_FD1
constexpr int DMS_FD1_HeadRollAng                      = 0x21008234;  // int32Values, DMS_FD1
constexpr int DMS_FD1_HeadPosnX                        = 0x21008235;  // int32Values, DMS_FD1
constexpr int DMS_FD1_HeadPosnY                        = 0x21008236;  // int32Values, DMS_FD1
constexpr int DMS_FD1_HeadPosnZ                        = 0x21008237;  // int32Values, DMS_FD1
constexpr int DMS_FD1_LEyeOpenSts                      = 0x21008238;  // int32Values, DMS_FD1
constexpr int DMS_FD1_LEyeOpenStsQlty                  = 0x21008239;  // int32Values, DMS_FD1
constexpr int DMS_FD1_REyeOpenSts                      = 0x2100823A;  // int32Values, DMS_FD1
constexpr int DMS_FD1_REyeOpenStsQlty                  = 0x2100823B;  // int32Values, DMS_FD1
constexpr int DMS_FD1_RobustGazeYawAng                 = 0x2100823C;  // int32Values, DMS_FD1
constexpr int DMS_FD1_RobustGazePitchAng               = 0x2100823D;  // int32Values, DMS_FD1
constexpr int HUT_FD4_HUT_HAVP_Return_Btn              = 0x214054D1;  // int32Values, HUT_FD4
constexpr int HUT_FD4_HUT_HAVP_Path_Delete             = 0x214054D7;  // int32Values, HUT_FD4
constexpr int HUT_FD4_HUT_HAVP_Path_Select             = 0x214054D8;  // int32Values, HUT_FD4
constexpr int HUT_FD4_HUT_HAVP_Path_SetTop             = 0x214054D9;  // int32Values, HUT_FD4
constexpr int HUT_FD4_HUT_HAVP_APA_Permit              = 0x2100823F;  // int32Values, HUT_FD4
constexpr int HUT_FD4_HUT__HAVP_Set_Starting           = 0x21008240;  // int32Values, HUT_FD4
constexpr int HUT_FD4_HUT_HAVP_SelfParLot_Ending       = 0x214054D2;  // int32Values, HUT_FD4
constexpr int HUT_FD4_HUT_HAVP_Set_Path_Ending         = 0x214054D5;  // int32Values, HUT_FD4
constexpr int HUT_FD4_HUT_PAVP_PathList_Req            = 0x214054DD;  // int32Values, HUT_FD4
constexpr int HUT_FD4_HUT_PAVP_DropOff_Area_req        = 0x214054DC;  // int32Values, HUT_FD4
constexpr int HUT_FD4_HUT_PAVP_Confirm                 = 0x214054DB;  // int32Values, HUT_FD4
constexpr int HUT34_TimeMod                            = 0x2140202E;  // int32Values, HUT34
constexpr int HUT34_TimeIndcn                          = 0x2140202F;  // int32Values, HUT34
constexpr int HUT34_Time_Hour                          = 0x21402030;  // int32Values, HUT34
constexpr int HUT34_Time_Minutes                       = 0x21402031;  // int32Values, HUT34
constexpr int HUT34_Time_Second                        = 0x21402032;  // int32Values, HUT34
constexpr int HUT34_Time_Year_Left                     = 0x21402033;  // int32Values, HUT34
constexpr int HUT34_Time_Year_Right                    = 0x21402034;  // int32Values, HUT34
constexpr int HUT34_Time_Month                         = 0x21402035;  // int32Values, HUT34
constexpr int HUT34_Time_Day                           = 0x21402036;  // int32Values, HUT34
constexpr int HUT25_HUT_RemtEngCtrl                    = 0x2140402E;  // int32Values, HUT25
constexpr int HUT32_PrkStraightSwtReq_HUT              = 0x21404033;  // int32Values, HUT32
constexpr int HUT32_PrkStraightSts_HUT                 = 0x21404035;  // int32Values, HUT32
constexpr int HUT32_PrkStraightModSel_HUT              = 0x21404034;  // int32Values, HUT32
constexpr int HUT32_PrkStraightVehStrtReq_HUT_Valid    = 0x21404037;  // int32Values, HUT32
constexpr int HUT32_PrkStraightStrtReq_HUT             = 0x21404036;  // int32Values, HUT32
constexpr int HUT32_PrkStraightContinueReq_HUT         = 0x21404038;  // int32Values, HUT32
constexpr int HUT32_PrkStraightSuspendOrFinishReq_HUT  = 0x2140407D;  // int32Values, HUT32
constexpr int HUT33_P2P_PrkgDirectSwtCmd               = 0x214054CF;  // int32Values, HUT33
constexpr int DMS_FD1_DrvGazeAreaSts                   = 0x21403C3D;  // int32Values, DMS_FD1

// clang-format on
// NOLINTEND(bugprone-reserved-identifier)

}  // namespace ids

/// The property that a signal of this name ("ESP_FD2_VehSpd") feeds or is set by; 0 for an unknown name.
QVN_VEHICLE_API int propertyId(const char* signal);

/// The name of the first signal of a property, valid for ever; null for an unknown identifier.
QVN_VEHICLE_API const char* propertyName(int id);

}  // namespace vehicle
}  // namespace platform
}  // namespace qvn

#endif  // VEHICLE_PROPERTY_IDS_H
