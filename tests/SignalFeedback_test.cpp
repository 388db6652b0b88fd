#include "support/ClientTest.h"

namespace {

using namespace qvn::test;
using namespace can_service;

VehicleProperty property(int id) {
    return static_cast<VehicleProperty>(id);
}

class SignalFeedbackTest : public ClientTest {
protected:
    std::vector<LogLine> feedbackLog() { return log_recorder::linesOf("signalFeedback"); }
};

TEST_F(SignalFeedbackTest, LogsTheRowAndTheFirstRawByte) {
    makeClient();
    EXPECT_TRUE(client->signalFeedback(property(0x21405276), 300));
    const std::vector<LogLine> expected = {
        {3, "signalFeedback", 72, "[%s][%d]vehicle client code id:%d, signal_table_[i].property:%d",
         "vehicle client code id:40834992, signal_table_[i].property:557863542"},
        {1, "signalFeedback", 361, "[%s][%d]HUT32_XLvl value:%d", "HUT32_XLvl value:1"},
    };
    EXPECT_EQ(feedbackLog(), expected);
}

TEST_F(SignalFeedbackTest, LogsRawBytesAsUnsignedNumbers) {
    makeClient();
    EXPECT_TRUE(client->signalFeedback(property(0x21403033), -1));
    EXPECT_EQ(feedbackLog()[1], (LogLine{1, "signalFeedback", 97, "[%s][%d]HUT6_CarMdlDispCmd value:%d",
                                         "HUT6_CarMdlDispCmd value:255"}));
}

TEST_F(SignalFeedbackTest, RowsOfReceivedSignalsAreRefusedOneByOne) {
    makeClient();
    EXPECT_FALSE(client->signalFeedback(property(0x11410A10), 1L));
    const std::vector<LogLine> log = feedbackLog();
    ASSERT_EQ(log.size(), 10u);
    EXPECT_EQ(log[0].text, "vehicle client code id:38014944, signal_table_[i].property:289475088");
    EXPECT_EQ(log[1], (LogLine{3, "signalFeedback", 1110, "[%s][%d]Not Feedback Can Signal Id = [%d]!",
                               "Not Feedback Can Signal Id = [38014944]!"}));
    EXPECT_EQ(log[9].text, "Not Feedback Can Signal Id = [38012640]!");
}

TEST_F(SignalFeedbackTest, AnUnknownPropertyOrNoTableIsSilent) {
    makeClient();
    EXPECT_FALSE(client->signalFeedback(property(0x12345678), 1.0f));
    client->setFuncSignalTable(nullptr);
    EXPECT_FALSE(client->signalFeedback(property(0x21403033), 1));
    EXPECT_TRUE(feedbackLog().empty());
}

TEST_F(SignalFeedbackTest, TheLastRowOfAPropertyDecidesTheResult) {
    std::vector<VehilceClientInfo> table(hap_signal_table, hap_signal_table + qvn::tables::kSignalTableRows);
    table[0].property = 0x21403033;  // a received signal before the set row
    makeClient();
    client->setFuncSignalTable(table.data());
    EXPECT_TRUE(client->signalFeedback(property(0x21403033), 1));
    table.back().property = 0x21403033;  // and one behind it
    EXPECT_FALSE(client->signalFeedback(property(0x21403033), 1));
    table[27].direction = 0x100;
    table.back().direction = 0;
    EXPECT_FALSE(client->signalFeedback(property(0x21403033), 1));
}

TEST_F(SignalFeedbackTest, ASignalWithoutAShippedRowIsSentForATableThatMapsIt) {
    std::vector<VehilceClientInfo> table(hap_signal_table, hap_signal_table + qvn::tables::kSignalTableRows);
    table[0].codeId = QVN_SET_HUT25_CarWashMode_Req;
    makeClient();
    connectClient();
    client->setFuncSignalTable(table.data());
    EXPECT_TRUE(client->signalFeedback(property(0x21600E24), static_cast<unsigned char>(2)));
    ASSERT_TRUE(server.requests.waitForSize(1));
    EXPECT_EQ(server.requests.entries()[0], (SetRequest{QVN_SET_HUT25_CarWashMode_Req, "\x02"}));
}

}  // namespace
