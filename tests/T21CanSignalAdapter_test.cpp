#include "adapter/T21CanSignalAdapter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "common.base.canservice.pb.h"
#include "support/ExpectedTables.h"
#include "support/Fingerprint.h"
#include "support/LogRecorder.h"
#include "tables/DecodingRules.h"
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
    const struct {
        const char* signal;
        std::string raw;
        std::vector<int> integers;
        std::vector<float> floats;
        const char* log;  ///< behind the signal's name; null: nothing is logged
    } cases[] = {
        {"BCM1_DrvDoorSts", bytes({1}), {1}, {}, " value:1"},
        {"BCM1_DrvDoorSts", bytes({0xFF}), {255}, {}, " value:255"},
        {"BCM1_DrvDoorSts", bytes({2, 9}), {2}, {}, " value:2"},
        {"BCM1_DrvDoorSts", "", {0}, {}, " value:0"},
        {"HCU_HP5_DrvModDisp_0x201", bytes({4}), {4}, {}, " value:4"},
        {"HAP_FD1_APS_ESP_BrkDistance", bytes({1, 2}), {258}, {}, " value:258"},
        {"HAP_FD1_APS_ESP_BrkDistance", bytes({1}), {256}, {}, " value:256"},
        {"HAP_FD2_AVM_3DAngSts", bytes({0xFF, 0xFF}), {65535}, {}, " value:65535"},
        {"ESP_FD2_VehSpd", bytes({0x07, 0xD0}), {}, {112.5f}, " value:112.500000"},
        {"ESP_FD2_VehSpd", bytes({0, 1}), {}, {0.05625f}, " value:0.056250"},
        {"CSA2_SteerWheelAng", bytes({0x01, 0x2C}), {}, {30.0f}, nullptr},
        {"CSA2_SteerWheelAng", bytes({0xFF, 0xFF}), {}, {6553.5f}, nullptr},
        {"CSA2_SteerWheelAng", "", {}, {0.0f}, nullptr},
        {"ABS1_FLWheelSpd", bytes({0, 19}), {1}, {}, nullptr},
        {"ABS1_FRWheelSpd", bytes({0, 17}), {0}, {}, nullptr},
        {"ABS2_RRWheelSpd", bytes({0xFF, 0xFF}), {3686}, {}, nullptr},
        {"CSA3_SeekUpSwtSts", bytes({1}), {1, 1002}, {}, " value:1, direct:1002"},
        {"CSA3_AdjVolUpSwtSts", bytes({0}), {0, 1000}, {}, " value:0, direct:1000"},
        {"CSA3_EnterSwtSts_Mmed", bytes({2}), {2, 2004}, {}, " value:2, direct:2004"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.signal);
        const std::string name = std::string("QVN_GET_") + c.signal;
        log_recorder::reset();
        EXPECT_TRUE(adapt(static_cast<int>(codeOf(name)), c.raw));
        EXPECT_EQ(property.propValue.prop, propertiesOf(name).at(0));
        EXPECT_EQ(property.propValue.areaId, 0x01000000);
        EXPECT_EQ(property.propValue.status, 0);
        EXPECT_EQ(property.propValue.timestamp, 0);
        EXPECT_EQ(property.propertyType, c.floats.empty() ? 3 : 5);
        EXPECT_EQ(property.propValue.value.int32Values, c.integers);
        EXPECT_EQ(property.propValue.value.floatValues, c.floats);
        const std::vector<LogLine> log = log_recorder::linesOf("signalAdapter");
        ASSERT_EQ(log.size(), c.log == nullptr ? 0u : 1u);
        EXPECT_TRUE(log.empty() || (log[0].level == 3 && log[0].text == std::string(c.signal) + c.log)) << log[0];
    }
}

TEST_F(T21CanSignalAdapterTest, SignalsThatFeedNothingAreDroppedSilently) {
    EXPECT_TRUE(adapt(QVN_GET_BCM1_DrvDoorSts, bytes({1})));  // is forgotten by the next
    log_recorder::reset();
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

// One number stands for all results, so that processors whose conversions differ can be compared.
TEST_F(T21CanSignalAdapterTest, EveryRawValueHasTheSameResultOnEveryProcessor) {
    Fingerprint fingerprint;
    for (const qvn::tables::DecodingRow& row : qvn::tables::kDecodingRules) {
        const int largest = row.bytes == 1 ? 0xFF : 0xFFFF;
        for (int value = 0; value <= largest; ++value) {
            adapt(static_cast<int>(row.code), row.bytes == 1 ? bytes({value}) : bytes({value >> 8, value & 0xFF}));
            for (const int integer : property.propValue.value.int32Values) {
                fingerprint.add(integer);
            }
            for (const float number : property.propValue.value.floatValues) {
                fingerprint.add(number);
            }
        }
        log_recorder::reset();
    }
    EXPECT_EQ(fingerprint.value(), 6193338869039517792u);
}

}  // namespace
