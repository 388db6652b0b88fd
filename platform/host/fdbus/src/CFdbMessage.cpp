#include <common_base/CFdbMessage.h>

#include "Frame.h"
#include "ServerHub.h"

#include <cstring>

CFdbMessage::CFdbMessage(const fdb::FrameView& frame, FdbSessionId_t session,
                         const std::shared_ptr<fdb::ServerSession>& peer)
    : mCode(frame.code),
      mSession(session),
      mSerial(frame.serial),
      mSize(frame.size),
      mPayload(mSmall),
      mTopic(frame.topic),
      mPeer(peer) {
    const auto size = static_cast<size_t>(frame.size);
    if (size > sizeof(mSmall)) {
        mLarge.reset(new uint8_t[size]);
        mPayload = mLarge.get();
    }
    std::memcpy(mPayload, frame.payload, size);
}

CFdbMessage::~CFdbMessage() = default;

bool CFdbMessage::broadcast(FdbMsgCode_t code, IFdbMsgBuilder& builder, const char* topic) {
    fdb::FrameBuilder frame(fdb::FrameKind::Broadcast, code, 0, topic);
    if (!frame.append(builder) || !fdb::contextRuns()) {
        return false;
    }
    const std::shared_ptr<fdb::ServerSession> peer = mPeer.lock();
    const std::shared_ptr<fdb::ServerHub> hub = peer ? peer->hub.lock() : nullptr;
    if (hub) {
        hub->answer(*peer, code, topic, frame);
    }
    return true;
}

bool CFdbMessage::reply(CBaseJob::Ptr& request, IFdbMsgBuilder& builder) {
    const CFdbMessage* message = castToMessage<CFdbMessage*>(request);
    if (!message) {
        return false;
    }
    fdb::FrameBuilder frame(fdb::FrameKind::Reply, message->mCode, message->mSerial, nullptr);
    return frame.append(builder) && message->answer(frame);
}

bool CFdbMessage::status(CBaseJob::Ptr& request, int32_t error, const char* text) {
    const CFdbMessage* message = castToMessage<CFdbMessage*>(request);
    if (!message) {
        return false;
    }
    fdb::FrameBuilder frame(fdb::FrameKind::Status, error, message->mSerial, nullptr);
    return frame.append(text, text ? std::strlen(text) : 0) && message->answer(frame);
}

bool CFdbMessage::answer(fdb::FrameBuilder& frame) const {
    if (mSerial == 0 || !fdb::contextRuns()) {
        return false;
    }
    if (const std::shared_ptr<fdb::ServerSession> peer = mPeer.lock()) {
        peer->connection->send(frame.bytes());
    }
    return true;
}
