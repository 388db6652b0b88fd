#include "support/ClientTest.h"

namespace {

using namespace qvn::test;
using namespace can_service;
using namespace qvn::platform::vehicle;

class MessageStatusTest : public ClientTest {
protected:
    /// What happens, in order: "status PROPERTY STATE", "replay PROPERTY", "log TEXT".
    void recordTimeline() {
        makeClient();
        client->registerErrSignalCallback(&Application::status);
        client->registerAvailableSignalCallabck([this](VehicleProperty property) { note("replay ", property); });
        Application::onStatus = [this](const StatusChange& change) {
            note("status ", change.property, " " + std::to_string(change.status));
        };
        log_recorder::listen([this](const LogLine& line) {
            if (line.function == "feedbackSignalStatus") {
                timeline.push_back("log " + line.text);
            }
        });
    }
    void note(const std::string& what, int property, const std::string& more = "") {
        char hex[16];
        std::snprintf(hex, sizeof(hex), "0x%08X", static_cast<unsigned>(property));
        timeline.push_back(what + hex + more);
    }

    std::vector<std::string> timeline;
};

TEST_F(MessageStatusTest, StatusThenReplayThenLogForEverySignalInListOrder) {
    recordTimeline();
    client->feedbackSignalStatus(QVN_GET_BCM1, VEHICLE_PROPERTY_STATUS_AVAILABLE);
    const std::string log = "log feedbackSignalStatus QVN_GET_BCM1  signal id:";
    EXPECT_EQ(timeline,
              (std::vector<std::string>{
                  "log feedbackSignalStatus code_id :51970048",
                  "status 0x21400E20 0",
                  "replay 0x21400E20",
                  log + "51970768, signal name:QVN_GET_BCM1_DrvDoorSts  , property_id:557846048, status:0",
                  "status 0x21400E22 0",
                  "replay 0x21400E22",
                  log + "51970736, signal name:QVN_GET_BCM1_LRDoorSts, property_id:557846050, status:0",
                  "status 0x21400E21 0",
                  "replay 0x21400E21",
                  log + "51970704, signal name:QVN_GET_BCM1_PassengerDoorSts, property_id:557846049, status:0",
                  "status 0x21400E23 0",
                  "replay 0x21400E23",
                  log + "51970672, signal name:QVN_GET_BCM1_RRDoorSts, property_id:557846051, status:0",
                  "status 0x2140302E 0",
                  "replay 0x2140302E",
                  log + "51970800, signal name:QVN_GET_BCM1_TrunkSts, property_id:557854766, status:0",
              }));
    const LogLine line = log_recorder::linesOf("feedbackSignalStatus")[1];
    EXPECT_EQ(line.level, 3);
    EXPECT_EQ(line.line, 496);
}

TEST_F(MessageStatusTest, ATimeOutOfTheSwitchesIsReportedOncePerSwitchWithoutReplay) {
    recordTimeline();
    client->feedbackSignalStatus(QVN_GET_CSA3, VEHICLE_PROPERTY_STATUS_TIMEOUT);
    std::vector<std::string> expected = {"log feedbackSignalStatus code_id :38010880"};
    for (const char* const signal :
         {"38014944, signal name:QVN_GET_CSA3_SeekUpSwtSts", "38014816, signal name:QVN_GET_CSA3_SeekDwnSwtSts",
          "38012384, signal name:QVN_GET_CSA3_AdjVolUpSwtSts", "38012256, signal name:QVN_GET_CSA3_AdjVolDwnSwtSts",
          "38012640, signal name:QVN_GET_CSA3_EnterSwtSts_Mmed"}) {
        expected.push_back("status 0x11410A10 2");
        expected.push_back(std::string("log feedbackSignalStatus QVN_GET_CSA3  signal id:") + signal +
                           ", property_id:289475088, status:2");
    }
    EXPECT_EQ(timeline, expected);
}

TEST_F(MessageStatusTest, EveryMessageReportsEachOfItsSignalsOnce) {
    const struct {
        int code;
        std::size_t signals;
        int line;
        int firstProperty;
        int lastProperty;
    } messages[] = {
        {QVN_GET_CSA2, 2, 404, 0x21600E24, 0x21400E25},     {QVN_GET_ECM_PT7, 1, 887, 0x2140502F, 0x2140502F},
        {QVN_GET_ESP_FD2, 2, 565, 0x21600E1F, 0x2140201E},  {QVN_GET_HAP_FD1, 29, 611, 0x21403043, 0x21008247},
        {QVN_GET_CSA1, 2, 841, 0x21406330, 0x21406331},     {QVN_GET_EPB1, 1, 864, 0x21405433, 0x21405433},
        {QVN_GET_R_PBox1, 2, 427, 0x21404030, 0x2140382E},  {QVN_GET_HCU_HP5, 2, 910, 0x21405489, 0x21405488},
        {QVN_GET_DCT5, 1, 450, 0x21402622, 0x21402622},     {QVN_GET_ABS1, 4, 680, 0x21403061, 0x21603064},
        {QVN_GET_DCT_FD4, 2, 933, 0x2140202B, 0x21400E1E},  {QVN_GET_CSA3, 5, 657, 0x11410A10, 0x11410A10},
        {QVN_GET_ABS2, 4, 703, 0x21403065, 0x21603068},     {QVN_GET_ECM2, 1, 818, 0x2140402F, 0x2140402F},
        {QVN_GET_HAP_FD2, 22, 519, 0x214053AF, 0x214053B6}, {QVN_GET_PEPS2, 2, 749, 0x21403837, 0x21403838},
        {QVN_GET_HAP_FD3, 55, 542, 0x2140305D, 0x214053B7}, {QVN_GET_HAP_FD7, 4, 795, 0x21405539, 0x2140553C},
        {QVN_GET_BCM8, 3, 634, 0x2140307A, 0x21404A2E},     {QVN_GET_ACC_FD2, 1, 772, 0x21401271, 0x21401271},
        {QVN_GET_HCU_PT4, 1, 588, 0x21403048, 0x21403048},  {QVN_GET_PLG_1, 1, 473, 0x2140306E, 0x2140306E},
        {QVN_GET_BCM1, 5, 496, 0x21400E20, 0x2140302E},     {QVN_GET_BCM3, 2, 726, 0x21403069, 0x2140182C},
    };
    makeClient();
    client->registerErrSignalCallback(&Application::status);
    connectClient();
    for (const auto& [code, signals, line, first, last] : messages) {
        SCOPED_TRACE(CodeIdEnum_Name(static_cast<CodeIdEnum>(code)));
        Application::reset();
        log_recorder::reset();
        server.messageStatus(static_cast<std::uint32_t>(code), 64);
        server.messageStatus(static_cast<std::uint32_t>(code), 0);
        ASSERT_TRUE(log_recorder::waitForLine("onBroadcast", "can service dispatchs signals becomes ok!"));
        const std::vector<StatusChange> statuses = Application::statuses.entries();
        ASSERT_EQ(statuses.size(), 2 * signals);
        EXPECT_EQ(statuses[0], (StatusChange{first, VEHICLE_PROPERTY_STATUS_TIMEOUT}));
        EXPECT_EQ(statuses[signals - 1], (StatusChange{last, VEHICLE_PROPERTY_STATUS_TIMEOUT}));
        EXPECT_EQ(statuses[signals], (StatusChange{first, VEHICLE_PROPERTY_STATUS_AVAILABLE}));
        EXPECT_EQ(statuses.back(), (StatusChange{last, VEHICLE_PROPERTY_STATUS_AVAILABLE}));
        EXPECT_EQ(log_recorder::linesOf("feedbackSignalStatus")[1].line, line);
    }
}

TEST_F(MessageStatusTest, OtherCodesOrNobodyToTellLeaveOneLogLine) {
    recordTimeline();
    client->feedbackSignalStatus(0x02440001, VEHICLE_PROPERTY_STATUS_TIMEOUT);
    client->registerErrSignalCallback(nullptr);
    client->feedbackSignalStatus(QVN_GET_CSA3, VEHICLE_PROPERTY_STATUS_AVAILABLE);
    EXPECT_EQ(timeline, (std::vector<std::string>{"log feedbackSignalStatus code_id :38010881",
                                                  "log feedbackSignalStatus code_id :38010880"}));
}

}  // namespace
