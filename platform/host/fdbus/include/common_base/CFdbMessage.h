#pragma once

#include <common_base/CBaseJob.h>
#include <common_base/IFdbMsgBuilder.h>

#include <memory>
#include <string>
#include <vector>

namespace fdb {
class FrameBuilder;
class ServerSession;
struct FrameView;
}  // namespace fdb

/// One code of a subscribe or unsubscribe call.
class CFdbMsgSubscribeItem {
public:
    CFdbMsgSubscribeItem(FdbMsgCode_t code, const char* topic) : mCode(code), mFilter(topic ? topic : "") {}

    int32_t msg_code() const { return mCode; }
    bool has_filter() const { return !mFilter.empty(); }
    const std::string& filter() const { return mFilter; }

private:
    FdbMsgCode_t mCode;
    std::string mFilter;
};

/// The codes of one subscribe call.
typedef std::vector<CFdbMsgSubscribeItem> CFdbMsgTable;
typedef CFdbMsgTable CFdbMsgSubscribeList;
typedef CFdbMsgTable CFdbMsgTriggerList;

/// A message that arrived. It owns its payload: a copy of the job pointer keeps it valid after the callback.
class FDB_API CFdbMessage : public CBaseJob {
public:
    /// Made by the bus from a frame that it received. `peer` is where a server's answers go, null in a client.
    CFdbMessage(const fdb::FrameView& frame, FdbSessionId_t session, const std::shared_ptr<fdb::ServerSession>& peer);
    ~CFdbMessage() override;

    FdbMsgCode_t code() const { return mCode; }
    FdbSessionId_t session() const { return mSession; }
    FdbMsgSn_t sn() const { return mSerial; }
    const std::string& topic() const { return mTopic; }
    uint8_t* getPayloadBuffer() const { return mPayload; }
    int32_t getPayloadSize() const { return mSize; }
    /// False when the payload is not what the parser expects. Also false, without asking the parser, when there is no
    /// payload: a protobuf message of default values arrives like that.
    bool deserialize(IFdbMsgParser& parser) const { return mSize != 0 && parser.parse(mPayload, mSize); }

    /// Sends a broadcast to the one session that this message came from, if that has subscribed the code and topic.
    /// True says only that the context runs.
    bool broadcast(FdbMsgCode_t code, IFdbMsgBuilder& builder, const char* topic = nullptr);
    /// Answers an invoke(): the caller's onReply() gets the payload, or onStatus() the error. False when the job is no
    /// message, or one that nobody expects an answer to. True does not say that the session still lives.
    static bool reply(CBaseJob::Ptr& request, IFdbMsgBuilder& builder);
    static bool status(CBaseJob::Ptr& request, int32_t error, const char* text = nullptr);

    /// What a subscribe message asks for; empty for every other message.
    const CFdbMsgSubscribeList& subscribeList() const { return mSubscribeList; }
    void subscribeList(CFdbMsgSubscribeList&& list) { mSubscribeList = std::move(list); }

private:
    bool answer(fdb::FrameBuilder& frame) const;

    FdbMsgCode_t mCode;
    FdbSessionId_t mSession;
    FdbMsgSn_t mSerial;
    int32_t mSize;
    uint8_t* mPayload;
    uint8_t mSmall[32];  // a CAN signal's payload needs no allocation of its own
    std::unique_ptr<uint8_t[]> mLarge;
    std::string mTopic;
    std::weak_ptr<fdb::ServerSession> mPeer;
    CFdbMsgSubscribeList mSubscribeList;
};

typedef CFdbMessage CBaseMessage;

/// The message behind a job: null when the job is of another kind.
template <class T>
T castToMessage(CBaseJob::Ptr& job) {
    return dynamic_cast<T>(job.get());
}

/// Walks the codes of a subscribe message; `item` is a `const CFdbMsgSubscribeItem *` declared before.
#define FDB_BEGIN_FOREACH_SIGNAL(_msg, _item)                                \
    {                                                                        \
        for (const CFdbMsgSubscribeItem& fdb_it : (_msg)->subscribeList()) { \
            (_item) = &fdb_it;

#define FDB_END_FOREACH_SIGNAL() \
    }                            \
    }
