#include "tables/MessageCatalogue.h"

#include "common.base.canservice.pb.h"
#include "tables/SortedByCode.h"

namespace qvn {
namespace tables {

// clang-format off

#define MESSAGE(name, line)                                                                                   \
    {can_service::name, name##_signals, sizeof(name##_signals) / sizeof(name##_signals[0]),                   \
     "[%s][%d]feedbackSignalStatus " #name "  signal id:%d, signal name:%s, property_id:%d, status:%d", line}

constexpr MessageRow kMessages[] = {
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

// clang-format on

static_assert(firstUnsortedRow(kMessages) == kMessageCount, "messages must be sorted by code");

const MessageRow* findMessage(std::uint32_t code) {
    return findByCode(kMessages, code);
}

}  // namespace tables
}  // namespace qvn
