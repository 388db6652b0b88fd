#ifndef TABLES_SIGNAL_LISTS_H
#define TABLES_SIGNAL_LISTS_H

#include <vehicle/VehicleProperty.h>

#include <cstdint>

/// One signal of a CAN message. The code is the key; the name is for log lines, where some carry trailing blanks.
struct SignalListRow {
    char name[64];
    std::uint32_t code_id;
};

// Signals that the library receives, by message.
QVN_VEHICLE_API extern const SignalListRow QVN_GET_HAP_FD3_signals[];
QVN_VEHICLE_API extern const SignalListRow QVN_GET_ABS2_signals[];
QVN_VEHICLE_API extern const SignalListRow QVN_GET_ESP_FD2_signals[];
QVN_VEHICLE_API extern const SignalListRow QVN_GET_HAP_FD1_signals[];
QVN_VEHICLE_API extern const SignalListRow QVN_GET_PEPS2_signals[];
QVN_VEHICLE_API extern const SignalListRow QVN_GET_HCU_HP5_signals[];
QVN_VEHICLE_API extern const SignalListRow QVN_GET_ECM2_signals[];
QVN_VEHICLE_API extern const SignalListRow QVN_GET_CSA2_signals[];
QVN_VEHICLE_API extern const SignalListRow QVN_GET_ECM_PT7_signals[];
QVN_VEHICLE_API extern const SignalListRow QVN_GET_EPB1_signals[];
QVN_VEHICLE_API extern const SignalListRow QVN_GET_BCM1_signals[];
QVN_VEHICLE_API extern const SignalListRow QVN_GET_HAP_FD2_signals[];
QVN_VEHICLE_API extern const SignalListRow QVN_GET_ABS1_signals[];
QVN_VEHICLE_API extern const SignalListRow QVN_GET_BCM3_signals[];
QVN_VEHICLE_API extern const SignalListRow QVN_GET_DCT5_signals[];
QVN_VEHICLE_API extern const SignalListRow QVN_GET_ACC_FD2_signals[];
QVN_VEHICLE_API extern const SignalListRow QVN_GET_BCM8_signals[];
QVN_VEHICLE_API extern const SignalListRow QVN_GET_CSA3_signals[];
QVN_VEHICLE_API extern const SignalListRow QVN_GET_DCT_FD4_signals[];
QVN_VEHICLE_API extern const SignalListRow QVN_GET_HAP_FD7_signals[];
QVN_VEHICLE_API extern const SignalListRow QVN_GET_CSA1_signals[];
QVN_VEHICLE_API extern const SignalListRow QVN_GET_HCU_PT4_signals[];
QVN_VEHICLE_API extern const SignalListRow QVN_GET_PLG_1_signals[];
QVN_VEHICLE_API extern const SignalListRow QVN_GET_R_PBox1_signals[];

// Signals that the head unit may set, by message.
QVN_VEHICLE_API extern const SignalListRow QVN_SET_HUT_FD1_signals[];
QVN_VEHICLE_API extern const SignalListRow QVN_SET_HUT34_signals[];
QVN_VEHICLE_API extern const SignalListRow QVN_SET_HUT32_signals[];
QVN_VEHICLE_API extern const SignalListRow QVN_SET_DMS_FD1_signals[];
QVN_VEHICLE_API extern const SignalListRow QVN_SET_HUT_FD4_signals[];
QVN_VEHICLE_API extern const SignalListRow QVN_SET_HUT6_signals[];
QVN_VEHICLE_API extern const SignalListRow QVN_SET_HUT10_signals[];
QVN_VEHICLE_API extern const SignalListRow QVN_SET_HUT30_signals[];
QVN_VEHICLE_API extern const SignalListRow QVN_SET_HUT15_signals[];
QVN_VEHICLE_API extern const SignalListRow QVN_SET_HUT25_signals[];
QVN_VEHICLE_API extern const SignalListRow QVN_SET_HUT33_signals[];

#endif  // TABLES_SIGNAL_LISTS_H
