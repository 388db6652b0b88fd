#pragma once

#include <common_base/CBaseWorker.h>
#include <common_base/CFdbMessage.h>

#include <memory>
#include <string>

namespace fdb {
class Endpoint;
struct Callbacks;
}  // namespace fdb

/// What clients and servers have in common: the operations towards the other side, and the callbacks.
///
/// Operations may be called from any thread. Callbacks run on the object's worker where it was given one, else on the
/// context's thread, one at a time; an exception that leaves one is logged and swallowed.
class FDB_API CFdbBaseObject {
public:
    virtual ~CFdbBaseObject();
    CFdbBaseObject(const CFdbBaseObject&) = delete;
    CFdbBaseObject& operator=(const CFdbBaseObject&) = delete;

    static void addNotifyItem(CFdbMsgSubscribeList& list, FdbMsgCode_t code, const char* topic = nullptr);

    // The operations below return whether the message could be built and the context runs. True does not say that the
    // message arrives: while a client is offline, what it sends is lost.

    /// Client: asks for broadcasts of the listed codes; a code without topic covers every topic. Subscriptions end with
    /// the session: subscribe in onOnline(). Subscribing again does not double the broadcasts, but repeats the current
    /// values. Nothing answers a subscribe, so `timeout` has no effect.
    bool subscribe(CFdbMsgSubscribeList& list, int32_t timeout = 0);
    /// Client: a code without topic ends all its topics.
    bool unsubscribe(CFdbMsgSubscribeList& list);

    /// Client: a one-way message to the server's onInvoke().
    bool send(FdbMsgCode_t code, IFdbMsgBuilder& builder, EFdbQOS qos = FDB_QOS_RELIABLE);
    bool send(FdbMsgCode_t code, const void* buffer = nullptr, int32_t size = 0, EFdbQOS qos = FDB_QOS_RELIABLE);
    /// Client: a request. onReply() gets the answer; onStatus() an error, FDB_ST_TIMEOUT after `timeout` milliseconds
    /// (0: no limit), or FDB_ST_OFFLINE when there is no service or it goes away.
    bool invoke(FdbMsgCode_t code, IFdbMsgBuilder& builder, int32_t timeout = 0);

    /// Server: a request to one client, whose onInvoke() gets it behind everything that this thread sent there before.
    /// When that has returned, onStatus() here gets FDB_ST_AUTO_REPLY_OK; the client cannot answer in another way. A
    /// session that ends before does not answer: onOffline() tells.
    bool invoke(FdbSessionId_t receiver, FdbMsgCode_t code, IFdbMsgBuilder& builder);

    /// Server: a message to every session that subscribed the code.
    bool broadcast(FdbMsgCode_t code, IFdbMsgBuilder& builder, const char* topic = nullptr);
    bool broadcast(FdbMsgCode_t code, const void* buffer = nullptr, int32_t size = 0, const char* topic = nullptr);

    /// The worker that was given, or null.
    CBaseWorker* worker() const { return mWorker; }
    const std::string& name() const { return mName; }

    /// Ends all traffic of the object: when it returns, no callback of it runs or will run. Call it before the object
    /// is destroyed; a class that overrides callbacks calls it at the beginning of its destructor. Do not call it
    /// inside a callback: on the head unit's bus it would wait for itself.
    virtual void prepareDestroy();

    /// Whether a client that lost its service connects again by itself; on by default.
    void enableReconnect(bool enable);

protected:
    CFdbBaseObject(const char* name, CBaseWorker* worker);

    /// The object is connected to its service (client), or has a new session (server); the flag tells the first one.
    virtual void onOnline(FdbSessionId_t, bool /*is_first*/) {}
    virtual void onOffline(FdbSessionId_t, bool /*is_last*/) {}
    virtual void onBroadcast(CBaseJob::Ptr&) {}
    virtual void onReply(CBaseJob::Ptr&) {}
    virtual void onStatus(CBaseJob::Ptr&, int32_t /*error*/, const char* /*text*/) {}
    /// A send() or an invoke() of the other side arrived.
    virtual void onInvoke(CBaseJob::Ptr&) {}
    /// Server: answer with the current values, by the message's broadcast().
    virtual void onSubscribe(CBaseJob::Ptr&) {}

    std::shared_ptr<fdb::Endpoint> mEndpoint;

private:
    friend struct fdb::Callbacks;

    std::string mName;
    CBaseWorker* mWorker;
};

class FDB_API CBaseEndpoint : public CFdbBaseObject {
protected:
    using CFdbBaseObject::CFdbBaseObject;
};
