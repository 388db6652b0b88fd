#include <map>

#include "support/ClientTest.h"
#include "support/ExpectedTables.h"

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

TEST_F(MessageStatusTest, EveryMessageReportsThePropertiesOfItsSignalsInListOrder) {
    std::map<std::string, std::vector<StatusChange>> timeouts;
    for (const Words& entry : expected("list")) {
        for (const int property : propertiesOf(entry[1].substr(0, entry[1].find('.')))) {
            timeouts[entry[0]].push_back({property, VEHICLE_PROPERTY_STATUS_TIMEOUT});
        }
    }
    makeClient();
    client->registerErrSignalCallback(&Application::status);
    connectClient();
    for (const Words& message : expected("message")) {
        SCOPED_TRACE(message[0]);
        Application::reset();
        log_recorder::reset();
        server.messageStatus(codeOf(message[0]), 64);
        ASSERT_TRUE(log_recorder::waitForLine("onBroadcast", "can service dispatchs signals timeout!"));
        EXPECT_EQ(Application::statuses.entries(), timeouts.at(message[0] + "_signals"));
        EXPECT_EQ(log_recorder::linesOf("feedbackSignalStatus").back().line, std::stoi(message[1]));
    }
}

TEST_F(MessageStatusTest, AnotherSubscriptionInsideACallbackGetsTheRestOfTheMessage) {
    static std::vector<int> others;
    others.clear();
    makeClient();
    client->registerErrSignalCallback(&Application::status, 2);
    Application::onStatus = [this](const StatusChange&) {
        client->registerErrSignalCallback([](int property, VehiclePropertyStatus) { others.push_back(property); }, 3);
        client->registerErrSignalCallback(&Application::status, 1);  // an older one, that comes late
    };
    client->feedbackSignalStatus(QVN_GET_BCM1, VEHICLE_PROPERTY_STATUS_TIMEOUT);
    EXPECT_EQ(Application::statuses.entries().size(), 1u);
    EXPECT_EQ(others, (std::vector<int>{0x21400E22, 0x21400E21, 0x21400E23, 0x2140302E}));
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
