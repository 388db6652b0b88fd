#include <gtest/gtest.h>

#include "common.base.canservice.pb.h"

namespace {

using namespace can_service;

TEST(Schema, MessagesOnTheWire) {
    SetSignalValueRequest request;
    request.set_raw_value("\x05");
    EXPECT_EQ(request.SerializeAsString(), std::string("\x0A\x01\x05"));
    request.set_set_type(SET_SIG_TYPE_REQ);
    EXPECT_EQ(request.SerializeAsString(), std::string("\x0A\x01\x05\x10\x02"));

    BroadcastSignal signal;
    signal.set_raw_value(std::string("\x07\xD0", 2));
    EXPECT_EQ(signal.SerializeAsString(), std::string("\x0A\x02\x07\xD0", 4));

    BroadcastMessageStatus status;
    EXPECT_EQ(status.SerializeAsString(), "");
    status.set_msg_status(64);
    EXPECT_EQ(status.SerializeAsString(), std::string("\x08\x40"));
    EXPECT_TRUE(status.ParseFromString(""));
    EXPECT_EQ(status.msg_status(), 0u);

    SetSignalValueResponse response;
    response.set_result(FAILED);
    EXPECT_EQ(response.SerializeAsString(), std::string("\x08\x01"));
    SetSignalValueFinishedNotify finished;
    finished.set_raw_value("\x01");
    EXPECT_EQ(finished.SerializeAsString(), std::string("\x0A\x01\x01"));
}

TEST(Schema, AStatusParsesAsASignalAndKeepsTheUnknownField) {
    BroadcastSignal signal;
    ASSERT_TRUE(signal.ParseFromString("\x08\x40"));
    EXPECT_EQ(signal.raw_value(), "");
    EXPECT_EQ(signal.SerializeAsString(), "\x08\x40");
}

TEST(Schema, SmallEnums) {
    SetSignalType type{};
    EXPECT_TRUE(SetSignalType_Parse("SET_SIG_TYPE_TX", &type));
    EXPECT_EQ(type, 1);
    EXPECT_FALSE(SetSignalType_IsValid(3));
    EXPECT_EQ(SetResultEnum_Name(FAILED), "FAILED");
    EXPECT_EQ(static_cast<int>(SUCCESS), 0);
}

TEST(Schema, WhatIsNoCodeIdentifier) {
    EXPECT_FALSE(CodeIdEnum_IsValid(-4));
    EXPECT_FALSE(CodeIdEnum_IsValid(0x01370001));
    EXPECT_EQ(CodeIdEnum_Name(static_cast<CodeIdEnum>(-4)), "");
    CodeIdEnum untouched = QVN_GET_CSA2;
    for (const char* const name : {"QVN_GET_CSA2_SteerWheelAng ", "qvn_get_csa2", "QVN_SET_HUT6", ""}) {
        EXPECT_FALSE(CodeIdEnum_Parse(name, &untouched)) << name;
    }
    EXPECT_EQ(untouched, QVN_GET_CSA2);
}

}  // namespace
