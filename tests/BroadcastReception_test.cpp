#include <malloc.h>

#include "support/ClientTest.h"

namespace {

using namespace qvn::test;
using namespace can_service;

class BroadcastReceptionTest : public ClientTest {
protected:
    std::vector<std::string> broadcastLog() {
        std::vector<std::string> texts;
        for (const LogLine& line : log_recorder::linesOf("onBroadcast")) {
            texts.push_back(std::to_string(line.level) + " " + line.text);
        }
        return texts;
    }
};

TEST_F(BroadcastReceptionTest, ASignalReachesTheSignalCallback) {
    makeClient();
    connectClient();
    server.signal(QVN_GET_ESP_FD2_VehSpd, std::string("\x07\xD0", 2));
    server.signal(QVN_GET_CSA3_SeekDwnSwtSts, "\x01");
    ASSERT_TRUE(values.waitForSize(2));
    const std::vector<Change> got = values.entries();
    EXPECT_EQ(got[0].value.prop, 0x21600E1F);
    EXPECT_EQ(got[0].value.areaId, 0x01000000);
    EXPECT_EQ(got[0].type, 5);
    EXPECT_EQ(got[0].value.value.floatValues, std::vector<float>{112.5f});
    EXPECT_TRUE(got[0].value.value.int32Values.empty());
    EXPECT_EQ(got[1].value.prop, 0x11410A10);
    EXPECT_EQ(got[1].value.value.int32Values, (std::vector<int>{1, 1003}));
    EXPECT_EQ(broadcastLog(),
              (std::vector<std::string>{"3 onBroadcast msg_code:20466896.", "3 onBroadcast msg_code:38014816."}));
}

TEST_F(BroadcastReceptionTest, AShortValueDoesNotKeepBytesOfTheOneBefore) {
    makeClient();
    connectClient();
    server.signal(QVN_GET_HAP_FD1_APS_ESP_BrkDistance, std::string("\x01\x02", 2));
    server.signal(QVN_GET_HAP_FD1_APS_ESP_BrkDistance, "");
    ASSERT_TRUE(values.waitForSize(2));
    EXPECT_EQ(values.entries()[0].value.value.int32Values, std::vector<int>{258});
    EXPECT_EQ(values.entries()[1].value.value.int32Values, std::vector<int>{0});
}

TEST_F(BroadcastReceptionTest, TheMemoryOfAHugeValueIsNotKept) {
    const auto inUse = [] {
        const auto memory = mallinfo2();  // a sanitizer's allocator shows nothing here
        return static_cast<std::ptrdiff_t>(memory.uordblks + memory.hblkhd);
    };
    makeClient();
    connectClient();
    settle();
    const std::ptrdiff_t before = inUse();
    server.signal(QVN_GET_BCM1_DrvDoorSts, std::string(15 << 20, '\1'));
    log_recorder::reset();
    settle();
    EXPECT_LT(inUse() - before, 1 << 20);
}

TEST_F(BroadcastReceptionTest, UnusablePayloadsAreDropped) {
    makeClient();
    connectClient();
    server.payload(QVN_GET_BCM1_DrvDoorSts, "\xFF\xFF\xFF");                  // no protobuf message
    server.payload(QVN_GET_BCM1_DrvDoorSts, std::string("\x0A\x05\x01", 3));  // cut short
    server.payload(QVN_GET_BCM1, std::string("\x0A\x05\x01", 3));
    server.payload(QVN_GET_BCM1, std::string("\x0A\x01\x01\x08", 4));
    settle();
    ASSERT_TRUE(values.waitForSize(1));
    EXPECT_EQ(values.entries()[0].value.prop, 0x21405433);
    EXPECT_TRUE(log_recorder::linesOf("feedbackSignalStatus").empty());
    EXPECT_EQ(broadcastLog().size(), 5u);
}

TEST_F(BroadcastReceptionTest, MessageStatusIsRoutedByItsValue) {
    makeClient();
    connectClient();
    server.messageStatus(QVN_GET_BCM1, 64);
    server.messageStatus(QVN_GET_BCM1, 0);
    server.messageStatus(QVN_GET_BCM1, 1);
    settle();
    EXPECT_EQ(broadcastLog(),
              (std::vector<std::string>{
                  "3 onBroadcast msg_code:51970048.", "3 msg_status:64", "1 can service dispatchs signals timeout!",
                  "3 onBroadcast msg_code:51970048.", "3 msg_status:0", "3 can service dispatchs signals becomes ok!",
                  "3 onBroadcast msg_code:51970048.", "3 msg_status:1", "3 onBroadcast msg_code:23791456."}));
    const std::vector<LogLine> feedback = log_recorder::linesOf("feedbackSignalStatus");
    ASSERT_EQ(feedback.size(), 2u);
    for (const LogLine& line : feedback) {
        EXPECT_EQ(line, (LogLine{1, "feedbackSignalStatus", 385, "[%s][%d]feedbackSignalStatus code_id :%d",
                                 "feedbackSignalStatus code_id :51970048"}));
    }
}

TEST_F(BroadcastReceptionTest, ValuesAreDroppedUntilCallbackAndTableAreThere) {
    client = std::make_unique<TestClient>("fdbus_can_service_client", &worker);
    connectClient();
    server.signal(QVN_GET_BCM1_DrvDoorSts, "\x01");
    server.messageStatus(QVN_GET_BCM1, 1);
    ASSERT_TRUE(log_recorder::waitForLine("onBroadcast", "msg_status:1"));
    EXPECT_TRUE(log_recorder::linesOf("signalAdapter").empty());

    client->setFuncSignalTable(hap_signal_table);
    settle();
    EXPECT_TRUE(values.entries().empty());
}

}  // namespace
