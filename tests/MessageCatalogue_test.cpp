#include "tables/MessageCatalogue.h"

#include <gtest/gtest.h>

namespace {

using qvn::tables::findMessage;

TEST(MessageCatalogue, FindsAMessageWithItsSignals) {
    const qvn::tables::MessageRow* const message = findMessage(0x00A10000);
    ASSERT_NE(message, nullptr);
    EXPECT_EQ(message->signals, QVN_GET_CSA2_signals);
    EXPECT_EQ(message->signalCount, 2u);
    EXPECT_EQ(message->logLine, 404);
    EXPECT_STREQ(message->logFormat,
                 "[%s][%d]feedbackSignalStatus QVN_GET_CSA2  signal id:%d, signal name:%s, property_id:%d, status:%d");
}

TEST(MessageCatalogue, FirstAndLastMessageAreFound) {
    ASSERT_NE(findMessage(0x03450000), nullptr);
    EXPECT_EQ(findMessage(0x03450000)->logLine, 726);
    EXPECT_EQ(qvn::tables::kMessages[0].code, 0x00A10000u);
    EXPECT_EQ(qvn::tables::kMessages[23].code, 0x03450000u);
}

TEST(MessageCatalogue, OtherCodesAreNoMessages) {
    for (const std::uint32_t code : {0u, 0x00330000u, 0x02440001u, 0x02440F60u, 0x01380000u, 0xFFFFFFFFu}) {
        EXPECT_EQ(findMessage(code), nullptr) << std::hex << code;
    }
}

}  // namespace
