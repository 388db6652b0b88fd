#include <common_base/CFdbMessage.h>

#include "Connection.h"
#include "Frame.h"

#include <cstring>

CFdbMessage::CFdbMessage(const fdb::FrameView& frame, FdbSessionId_t session,
                         const std::shared_ptr<fdb::Connection>& connection)
    : mCode(frame.code),
      mSession(session),
      mSerial(frame.serial),
      mSize(frame.size),
      mPayload(mSmall),
      mTopic(frame.topic),
      mConnection(connection) {
    const auto size = static_cast<size_t>(frame.size);
    if (size > sizeof(mSmall)) {
        mLarge.reset(new uint8_t[size]);
        mPayload = mLarge.get();
    }
    std::memcpy(mPayload, frame.payload, size);
}

CFdbMessage::~CFdbMessage() = default;

bool CFdbMessage::broadcast(FdbMsgCode_t code, IFdbMsgBuilder& builder, const char* topic) {
    const std::shared_ptr<fdb::Connection> connection = mConnection.lock();
    fdb::FrameBuilder frame(fdb::FrameKind::Broadcast, code, 0, topic);
    return connection && frame.append(builder) && connection->send(frame.bytes());
}

bool CFdbMessage::reply(CBaseJob::Ptr& request, IFdbMsgBuilder& builder) {
    const CFdbMessage* message = castToMessage<CFdbMessage*>(request);
    if (!message) {
        return false;
    }
    const std::shared_ptr<fdb::Connection> connection = message->mConnection.lock();
    fdb::FrameBuilder frame(fdb::FrameKind::Reply, message->mCode, message->mSerial, nullptr);
    return connection && frame.append(builder) && connection->send(frame.bytes());
}

bool CFdbMessage::status(CBaseJob::Ptr& request, int32_t error, const char* text) {
    const CFdbMessage* message = castToMessage<CFdbMessage*>(request);
    if (!message) {
        return false;
    }
    const std::shared_ptr<fdb::Connection> connection = message->mConnection.lock();
    fdb::FrameBuilder frame(fdb::FrameKind::Status, error, message->mSerial, nullptr);
    return connection && frame.append(text, text ? std::strlen(text) : 0) && connection->send(frame.bytes());
}
