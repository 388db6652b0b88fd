#include "tables/SubscriptionCodes.h"

#include <gtest/gtest.h>

#include <set>

#include "tables/MessageCatalogue.h"
#include "tables/SignalTable.h"

namespace {

using qvn::tables::kSubscriptionCodes;

TEST(SubscriptionCodes, AreInOrder) {
    const std::pair<std::size_t, std::uint32_t> samples[] = {
        {0, 0x00A10FF0},    // CSA2_SteerWheelAng
        {1, 0x019C03F0},    // R_PBox1_LTurnLmpSts_R_Pbox
        {18, 0x02980EF0},   // HAP_FD3_APS_FRSideSnsrFailSts, before FLSide
        {19, 0x02980ED0},   // HAP_FD3_APS_FLSideSnsrFailSts
        {32, 0x02FA0FB0},   // HCU_PT4_CarWashMode_StsDisp
        {153, 0x02361BF0},  // DCT_FD4_DrvModDisp_0x236
        {154, 0x00A10000},  // the messages: CSA2 ...
        {159, 0x02740000},  // HAP_FD2
        {160, 0x02980000},  // HAP_FD3
        {177, 0x02360000},  // ... DCT_FD4
    };
    for (const auto& [index, code] : samples) {
        EXPECT_EQ(kSubscriptionCodes[index], code) << index;
    }
}

TEST(SubscriptionCodes, AreEverySignalOfTheTableAndEveryMessageOnce) {
    const std::set<std::uint32_t> codes(std::begin(kSubscriptionCodes), std::end(kSubscriptionCodes));
    EXPECT_EQ(codes.size(), 178u);
    std::size_t signals = 0;
    for (const VehilceClientInfo& row : hap_signal_table) {
        signals += codes.count(row.codeId);
    }
    EXPECT_EQ(signals, 154u);
    for (const qvn::tables::MessageRow& message : qvn::tables::kMessages) {
        EXPECT_EQ(codes.count(message.code), 1u) << std::hex << message.code;
    }
}

}  // namespace
