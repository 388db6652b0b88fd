#include "tables/SignalTable.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>

#include "common.base.canservice.pb.h"

namespace {

struct Sample {
    std::size_t row;
    std::uint32_t code;
    std::int32_t type;
    std::uint32_t property;
};

TEST(SignalTable, RowsAreWhereTheyBelong) {
    const Sample samples[] = {
        {0, 0x00A10FF0, 5, 0x21600E24},   // steering angle
        {5, 0x031902D0, 3, 0x21400E20},   // driver's door
        {22, 0x004A0550, 3, 0x21401C23},  // lane calibration, listed twice
        {24, 0x01384CD0, 5, 0x21600E1F},  // vehicle speed
        {59, 0x029F0110, 3, 0x2140307A},  // parking work command
        {64, 0x02440FE0, 3, 0x11410A10},  // the five switches
        {65, 0x02440F60, 3, 0x11410A10},
        {66, 0x024405E0, 3, 0x11410A10},
        {67, 0x02440560, 3, 0x11410A10},
        {68, 0x024406E0, 3, 0x11410A10},
        {78, 0x02310CD0, 3, 0x21603062},   // wheel speed: float identifier, integer
                                           // value
        {146, 0x026F0130, 3, 0x21403041},  // video lost, listed twice
        {147, 0x029503E0, 3, 0x21403837},  // power mode
        {152, 0x004A0550, 3, 0x21401C23},
        {190, 0x015BA7C1, 3, 0x214054EC},
        {236, 0x015BA7C0, 3, 0x21008247},
        {240, 0x02361BF0, 3, 0x21400E1E},
    };
    for (const Sample& sample : samples) {
        SCOPED_TRACE(sample.row);
        const VehilceClientInfo& row = hap_signal_table[sample.row];
        EXPECT_EQ(row.codeId, sample.code);
        EXPECT_EQ(row.direction, 1);
        EXPECT_EQ(row.propertyType, sample.type);
        EXPECT_EQ(row.areaId, 0x01000000u);
        EXPECT_EQ(row.status, 0);
        EXPECT_EQ(row.property, sample.property);
    }
}

TEST(SignalTable, FiveTablesHoldTheSameRowsAsDistinctObjects) {
    const VehilceClientInfo* const tables[] = {avm_signal_table, rvc_signal_table, hap_signal_table, dms_signal_table,
                                               oms_signal_table};
    for (const VehilceClientInfo* const table : tables) {
        EXPECT_EQ(std::memcmp(table, avm_signal_table, sizeof(avm_signal_table)), 0);
    }
    EXPECT_EQ(sizeof(avm_signal_table), 5784u);
    EXPECT_EQ((std::set<const void*>{tables[0], tables[1], tables[2], tables[3], tables[4]}.size()), 5u);
}

TEST(SignalTable, CountsOfReceivedAndSentRows) {
    int received = 0;
    int sent = 0;
    int floats = 0;
    for (const VehilceClientInfo& row : avm_signal_table) {
        const std::string name = can_service::CodeIdEnum_Name(static_cast<can_service::CodeIdEnum>(row.codeId));
        received += name.rfind("QVN_GET_", 0) == 0;
        sent += name.rfind("QVN_SET_", 0) == 0;
        floats += row.propertyType == 5;
    }
    EXPECT_EQ(received, 154);
    EXPECT_EQ(sent, 87);
    EXPECT_EQ(floats, 2);
}

}  // namespace
