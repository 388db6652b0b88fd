#pragma once

#include <common_base/IFdbMsgBuilder.h>
#include <google/protobuf/message_lite.h>

#include <limits>
#include <string>

/// Writes a protobuf message as a payload. The message must outlive the builder.
class CFdbProtoMsgBuilder : public IFdbMsgBuilder {
public:
    explicit CFdbProtoMsgBuilder(const google::protobuf::MessageLite& message) : mMessage(message) {}

    int32_t build() override {
        const size_t size = mMessage.ByteSizeLong();
        mSize = size <= static_cast<size_t>(std::numeric_limits<int32_t>::max()) ? static_cast<int32_t>(size) : -1;
        return mSize;
    }
    int32_t bufferSize() override { return mSize; }
    const uint8_t* buffer() override {
        return mMessage.SerializeToString(&mText) ? reinterpret_cast<const uint8_t*>(mText.data()) : nullptr;
    }
    bool toBuffer(uint8_t* buffer, int32_t size) override { return mMessage.SerializeToArray(buffer, size); }
    bool toString(std::string& text) const override { return mMessage.SerializeToString(&text); }

private:
    const google::protobuf::MessageLite& mMessage;
    int32_t mSize = 0;
    std::string mText;
};

/// Reads a payload into a protobuf message. The message must outlive the parser.
class CFdbProtoMsgParser : public IFdbMsgParser {
public:
    explicit CFdbProtoMsgParser(google::protobuf::MessageLite& message) : mMessage(message) {}

    bool parse(const uint8_t* buffer, int32_t size) override { return mMessage.ParseFromArray(buffer, size); }

private:
    google::protobuf::MessageLite& mMessage;
};
