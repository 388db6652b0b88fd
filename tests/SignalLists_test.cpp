#include "tables/SignalLists.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "common.base.canservice.pb.h"

namespace {

struct List {
    const SignalListRow* rows;
    std::size_t size;
    std::size_t expectedSize;
};

#define LIST(name, size)                           \
    List {                                         \
        name, sizeof(name) / sizeof(name[0]), size \
    }

const List kLists[] = {
    LIST(QVN_GET_HAP_FD3_signals, 55), LIST(QVN_GET_ABS2_signals, 4),     LIST(QVN_GET_ESP_FD2_signals, 2),
    LIST(QVN_GET_HAP_FD1_signals, 29), LIST(QVN_GET_PEPS2_signals, 2),    LIST(QVN_GET_HCU_HP5_signals, 2),
    LIST(QVN_GET_ECM2_signals, 1),     LIST(QVN_GET_CSA2_signals, 2),     LIST(QVN_GET_ECM_PT7_signals, 1),
    LIST(QVN_GET_EPB1_signals, 1),     LIST(QVN_GET_BCM1_signals, 5),     LIST(QVN_GET_HAP_FD2_signals, 22),
    LIST(QVN_GET_ABS1_signals, 4),     LIST(QVN_GET_BCM3_signals, 2),     LIST(QVN_GET_DCT5_signals, 1),
    LIST(QVN_GET_ACC_FD2_signals, 1),  LIST(QVN_GET_BCM8_signals, 3),     LIST(QVN_GET_CSA3_signals, 5),
    LIST(QVN_GET_DCT_FD4_signals, 2),  LIST(QVN_GET_HAP_FD7_signals, 4),  LIST(QVN_GET_CSA1_signals, 2),
    LIST(QVN_GET_HCU_PT4_signals, 1),  LIST(QVN_GET_PLG_1_signals, 1),    LIST(QVN_GET_R_PBox1_signals, 2),
    LIST(QVN_SET_HUT_FD1_signals, 1),  LIST(QVN_SET_HUT34_signals, 9),    LIST(QVN_SET_HUT32_signals, 15),
    LIST(QVN_SET_DMS_FD1_signals, 17), LIST(QVN_SET_HUT_FD4_signals, 11), LIST(QVN_SET_HUT6_signals, 14),
    LIST(QVN_SET_HUT10_signals, 1),    LIST(QVN_SET_HUT30_signals, 1),    LIST(QVN_SET_HUT15_signals, 4),
    LIST(QVN_SET_HUT25_signals, 2),    LIST(QVN_SET_HUT33_signals, 11),
};

#undef LIST

TEST(SignalLists, SizesAndUniqueCodes) {
    std::vector<std::uint32_t> codes;
    for (const List& list : kLists) {
        EXPECT_EQ(list.size, list.expectedSize) << list.rows[0].name;
        for (std::size_t i = 0; i < list.size; ++i) {
            codes.push_back(list.rows[i].code_id);
        }
    }
    EXPECT_EQ(codes.size(), 240u);
    std::sort(codes.begin(), codes.end());
    EXPECT_EQ(std::adjacent_find(codes.begin(), codes.end()), codes.end());
}

TEST(SignalLists, NamesAreThoseOfTheCodesUpToTrailingBlanks) {
    std::vector<std::string> blanked;
    for (const List& list : kLists) {
        for (std::size_t i = 0; i < list.size; ++i) {
            const std::string name = list.rows[i].name;
            const std::string plain = name.substr(0, name.find(' '));
            const auto code = static_cast<can_service::CodeIdEnum>(list.rows[i].code_id);
            EXPECT_EQ(plain, can_service::CodeIdEnum_Name(code));
            if (name != plain) {
                blanked.push_back(name);
            }
            const char* const end = list.rows[i].name + sizeof(list.rows[i].name);
            EXPECT_TRUE(std::all_of(list.rows[i].name + name.size(), end, [](char c) { return c == '\0'; })) << name;
        }
    }
    EXPECT_EQ(blanked, (std::vector<std::string>{
                           "QVN_GET_HAP_FD3_APS_ObjRiSideAr2 ", "QVN_GET_HAP_FD3_APS_ObjRiSideAr5 ",
                           "QVN_GET_HAP_FD3_APS_ObjLeSideAr2 ", "QVN_GET_HAP_FD3_APS_ObjLeSideAr3 ",
                           "QVN_GET_HAP_FD3_APS_ObjLeSideAr5 ", "QVN_GET_HAP_FD3_RPAS_ObjRLMidlAr1 ",
                           "QVN_GET_CSA2_SteerWheelAng ", "QVN_GET_BCM1_DrvDoorSts  ", "QVN_GET_DCT5_TGS_LEVER "}));
}

TEST(SignalLists, SwitchesComeInReportingOrder) {
    const std::uint32_t expected[] = {0x02440FE0, 0x02440F60, 0x024405E0, 0x02440560, 0x024406E0};
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(QVN_GET_CSA3_signals[i].code_id, expected[i]);
    }
    EXPECT_EQ(QVN_SET_HUT25_signals[0].code_id, 0x033907E0u);
    EXPECT_EQ(QVN_GET_HAP_FD3_signals[54].code_id, 0x02980F80u);
}

}  // namespace
