// Links only with the protobuf runtime that the platform's wrapper of protobuf messages refers to.
#include <common_base/CFdbProtoMsgBuilder.h>
#include <common_base/fdbus.h>
#include <google/protobuf/message_lite.h>

#include <string>

bool writes(const google::protobuf::MessageLite& message, std::string& text);
bool writes(const google::protobuf::MessageLite& message, std::string& text) {
    return CFdbProtoMsgBuilder(message).toString(text);
}

bool reads(google::protobuf::MessageLite& message);
bool reads(google::protobuf::MessageLite& message) {
    return CFdbProtoMsgParser(message).parse(nullptr, 0);
}

int main() {}
