#include "adapter/T21CanSignalAdapter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "common.base.canservice.pb.h"
#include "support/LogRecorder.h"
#include "tables/SignalTable.h"

namespace {

using namespace qvn::test;
using namespace can_service;

std::string bytes(std::initializer_list<int> values) {
    std::string raw;
    for (const int value : values) {
        raw.push_back(static_cast<char>(value));
    }
    return raw;
}

struct Case {
    int code;
    std::string raw;
    std::int32_t property;
    std::int32_t type;
    std::vector<int> integers;
    std::vector<float> floats;
    std::vector<std::string> log;
};

class T21CanSignalAdapterTest : public ::testing::Test {
protected:
    T21CanSignalAdapterTest() { log_recorder::reset(); }

    bool adapt(int code, std::string raw, const VehilceClientInfo* table = hap_signal_table) {
        property = {};
        return adapter.signalAdapter(code, std::move(raw), table, property);
    }

    T21CanSignalAdapter adapter;
    VehicleClientProperty property;
};

TEST_F(T21CanSignalAdapterTest, DecodesByTheSignalsRule) {
    const Case cases[] = {
        // byte
        {QVN_GET_BCM1_DrvDoorSts, bytes({1}), 0x21400E20, 3, {1}, {}, {"BCM1_DrvDoorSts value:1"}},
        {QVN_GET_BCM1_DrvDoorSts, bytes({0xFF}), 0x21400E20, 3, {255}, {}, {"BCM1_DrvDoorSts value:255"}},
        {QVN_GET_BCM1_DrvDoorSts, bytes({2, 9}), 0x21400E20, 3, {2}, {}, {"BCM1_DrvDoorSts value:2"}},
        {QVN_GET_HAP_FD1_HAVP_WorkSts, bytes({7}), 0x214054EC, 3, {7}, {}, {"HAP_FD1_HAVP_WorkSts value:7"}},
        {QVN_GET_HCU_HP5_DrvModDisp_0x201, bytes({4}), 0x21405488, 3, {4}, {}, {"HCU_HP5_DrvModDisp_0x201 value:4"}},
        {QVN_GET_CSA2_SteerWheelAngSign, bytes({1}), 0x21400E25, 3, {1}, {}, {"CSA2_SteerWheelAngSign value:1"}},
        // word
        {QVN_GET_HAP_FD1_APS_ESP_BrkDistance,
         bytes({1, 2}),
         0x21008247,
         3,
         {258},
         {},
         {"HAP_FD1_APS_ESP_BrkDistance value:258"}},
        {QVN_GET_HAP_FD2_AVM_3DAngSts,
         bytes({0xFF, 0xFF}),
         0x214053B6,
         3,
         {65535},
         {},
         {"HAP_FD2_AVM_3DAngSts value:65535"}},
        // vehicle speed
        {QVN_GET_ESP_FD2_VehSpd, bytes({0x07, 0xD0}), 0x21600E1F, 5, {}, {112.5f}, {"ESP_FD2_VehSpd value:112.500000"}},
        {QVN_GET_ESP_FD2_VehSpd, bytes({0, 1}), 0x21600E1F, 5, {}, {0.05625f}, {"ESP_FD2_VehSpd value:0.056250"}},
        // steering angle
        {QVN_GET_CSA2_SteerWheelAng, bytes({0x01, 0x2C}), 0x21600E24, 5, {}, {30.0f}, {}},
        {QVN_GET_CSA2_SteerWheelAng, bytes({0xFF, 0xFF}), 0x21600E24, 5, {}, {6553.5f}, {}},
        // wheel speed
        {QVN_GET_ABS1_FLWheelSpd, bytes({0, 19}), 0x21603062, 3, {1}, {}, {}},
        {QVN_GET_ABS1_FRWheelSpd, bytes({0, 17}), 0x21603064, 3, {0}, {}, {}},
        {QVN_GET_ABS2_RRWheelSpd, bytes({0xFF, 0xFF}), 0x21603068, 3, {3686}, {}, {}},
        // switches
        {QVN_GET_CSA3_SeekUpSwtSts,
         bytes({1}),
         0x11410A10,
         3,
         {1, 1002},
         {},
         {"CSA3_SeekUpSwtSts value:1, direct:1002"}},
        {QVN_GET_CSA3_SeekDwnSwtSts,
         bytes({1}),
         0x11410A10,
         3,
         {1, 1003},
         {},
         {"CSA3_SeekDwnSwtSts value:1, direct:1003"}},
        {QVN_GET_CSA3_AdjVolUpSwtSts,
         bytes({0}),
         0x11410A10,
         3,
         {0, 1000},
         {},
         {"CSA3_AdjVolUpSwtSts value:0, direct:1000"}},
        {QVN_GET_CSA3_AdjVolDwnSwtSts,
         bytes({2}),
         0x11410A10,
         3,
         {2, 1001},
         {},
         {"CSA3_AdjVolDwnSwtSts value:2, direct:1001"}},
        {QVN_GET_CSA3_EnterSwtSts_Mmed,
         bytes({1}),
         0x11410A10,
         3,
         {1, 2004},
         {},
         {"CSA3_EnterSwtSts_Mmed value:1, direct:2004"}},
        // raw values that are too short
        {QVN_GET_BCM1_DrvDoorSts, "", 0x21400E20, 3, {0}, {}, {"BCM1_DrvDoorSts value:0"}},
        {QVN_GET_HAP_FD1_APS_ESP_BrkDistance,
         bytes({1}),
         0x21008247,
         3,
         {256},
         {},
         {"HAP_FD1_APS_ESP_BrkDistance value:256"}},
        {QVN_GET_CSA2_SteerWheelAng, "", 0x21600E24, 5, {}, {0.0f}, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(CodeIdEnum_Name(static_cast<CodeIdEnum>(c.code)));
        log_recorder::reset();
        EXPECT_TRUE(adapt(c.code, c.raw));
        EXPECT_EQ(property.propValue.prop, c.property);
        EXPECT_EQ(property.propValue.areaId, 0x01000000);
        EXPECT_EQ(property.propValue.status, 0);
        EXPECT_EQ(property.propValue.timestamp, 0);
        EXPECT_EQ(property.propertyType, c.type);
        EXPECT_EQ(property.propValue.value.int32Values, c.integers);
        EXPECT_EQ(property.propValue.value.floatValues, c.floats);
        std::vector<std::string> log;
        for (const LogLine& line : log_recorder::linesOf("signalAdapter")) {
            EXPECT_EQ(line.level, 3);
            log.push_back(line.text);
        }
        EXPECT_EQ(log, c.log);
    }
}

TEST_F(T21CanSignalAdapterTest, SignalsThatFeedNothingAreDroppedSilently) {
    for (const int code :
         {static_cast<int>(QVN_GET_T_Box_FD1_T_Box_AudioMuteReq), static_cast<int>(QVN_GET_BCM1), 0, -1}) {
        EXPECT_FALSE(adapt(code, bytes({1}))) << code;
        EXPECT_EQ(property.propValue.prop, 0);
    }
    EXPECT_FALSE(adapt(QVN_GET_BCM1_DrvDoorSts, bytes({1}), nullptr));
    EXPECT_TRUE(log_recorder::lines().empty());
}

class AdapterTableTest : public T21CanSignalAdapterTest {
protected:
    AdapterTableTest() : table(hap_signal_table, hap_signal_table + qvn::tables::kSignalTableRows) {}
    std::vector<VehilceClientInfo> table;
};

TEST_F(AdapterTableTest, ARowIsEnabledByTheLowByteOfItsDirection) {
    table[5].direction = 0x100;
    EXPECT_FALSE(adapt(QVN_GET_BCM1_DrvDoorSts, bytes({1}), table.data()));
    table[5].direction = -1;
    EXPECT_TRUE(adapt(QVN_GET_BCM1_DrvDoorSts, bytes({1}), table.data()));
}

TEST_F(AdapterTableTest, ASignalOfTwoRowsGivesTwoValuesAndTheLastRowsProperty) {
    table.back() = {QVN_GET_BCM1_DrvDoorSts, 1, 3, 7, 2, 0x2140FFFF};
    EXPECT_TRUE(adapt(QVN_GET_BCM1_DrvDoorSts, bytes({4}), table.data()));
    EXPECT_EQ(property.propValue.value.int32Values, (std::vector<int>{4, 4}));
    EXPECT_EQ(property.propValue.prop, 0x2140FFFF);
    EXPECT_EQ(property.propValue.areaId, 7);
    EXPECT_EQ(property.propValue.status, 2);
}

TEST_F(AdapterTableTest, ARowWithoutARuleIsReported) {
    table[0].codeId = QVN_SET_HUT6_LaneCalActvtCmd;
    EXPECT_FALSE(adapt(QVN_SET_HUT6_LaneCalActvtCmd, bytes({4}), table.data()));
    EXPECT_EQ(property.propValue.prop, 0x21600E24);
    EXPECT_TRUE(property.propValue.value.int32Values.empty());
    const std::vector<LogLine> log = log_recorder::linesOf("signalAdapter");
    ASSERT_EQ(log.size(), 1u);
    EXPECT_EQ(log[0].level, 3);
    EXPECT_EQ(log[0].format, "[%s][%d]Not Parse Can Signal Id = [%d]!");
    EXPECT_EQ(log[0].text, "Not Parse Can Signal Id = [4851024]!");
}

TEST_F(AdapterTableTest, SignalsWithoutAShippedRowAreDecodedByATableThatMapsThem) {
    table[0].codeId = QVN_GET_T_Box_FD1_T_Box_AudioMuteReq;
    EXPECT_TRUE(adapt(QVN_GET_T_Box_FD1_T_Box_AudioMuteReq, bytes({1}), table.data()));
    EXPECT_EQ(property.propValue.value.int32Values, std::vector<int>{1});
}

}  // namespace
