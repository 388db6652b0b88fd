#pragma once

#include <common_base/CFdbBaseObject.h>

#include "Frame.h"

#include <host/EventLoop.h>

#include <memory>
#include <string>
#include <utility>

namespace fdb {

/// What stands behind a CFdbBaseObject. An operation that its side does not have fails; the others return whether the
/// context runs.
class Endpoint : public std::enable_shared_from_this<Endpoint> {
public:
    Endpoint(std::shared_ptr<qvn::host::EventLoop> loop, CFdbBaseObject* owner)
        : mLoop(std::move(loop)), mOwner(owner) {}
    virtual ~Endpoint() = default;

    virtual bool subscription(FrameKind /*kind*/, const CFdbMsgSubscribeList& /*list*/) { return false; }
    virtual bool send(FrameBuilder& /*frame*/) { return false; }
    virtual bool invoke(FdbMsgCode_t /*code*/, IFdbMsgBuilder& /*builder*/, int32_t /*timeout*/) { return false; }
    virtual bool invoke(FdbSessionId_t /*receiver*/, FrameBuilder& /*frame*/) { return false; }
    virtual bool broadcast(FdbMsgCode_t /*code*/, const char* /*topic*/, FrameBuilder& /*frame*/) { return false; }
    virtual void enableReconnect(bool /*enable*/) {}

    /// For the owner's destructor: ends all traffic and lets go of the endpoint.
    static void retire(std::shared_ptr<Endpoint> endpoint) {
        endpoint->shutdown();
        if (endpoint->mLoop->isForeign()) {
            qvn::host::EventLoop::abandon(std::move(endpoint));
        }
    }

    /// Ends all traffic; when it returns, the owner is not called any more.
    void shutdown() {
        mLoop->runExclusive([this] {
            mOwner = nullptr;
            closeAll();
        });
    }

protected:
    /// Called while no handler of the loop runs.
    virtual void closeAll() = 0;

    /// `action` in a form that the loop may call at any time later: it does nothing when the owner has gone by then.
    template <typename Action>
    auto whileOwned(Action action) {
        return [weak = weak_from_this(), action = std::move(action)] {
            const std::shared_ptr<Endpoint> self = weak.lock();
            if (self && self->mOwner) {
                action();
            }
        };
    }

    const std::shared_ptr<qvn::host::EventLoop> mLoop;
    CFdbBaseObject* mOwner;  // the loop's thread only; null after shutdown()
};

/// The way to an object's callbacks. What an application throws there ends here.
struct Callbacks {
    static void online(CFdbBaseObject* owner, FdbSessionId_t session, bool first);
    static void offline(CFdbBaseObject* owner, FdbSessionId_t session, bool last);
    static void broadcast(CFdbBaseObject* owner, CBaseJob::Ptr& job);
    static void reply(CFdbBaseObject* owner, CBaseJob::Ptr& job);
    static void status(CFdbBaseObject* owner, CBaseJob::Ptr& job, int32_t error, const char* text);
    static void invoke(CFdbBaseObject* owner, CBaseJob::Ptr& job);
    static void subscribe(CFdbBaseObject* owner, CBaseJob::Ptr& job);
};

/// The loop that serves an object: its worker's, else the context's.
std::shared_ptr<qvn::host::EventLoop> loopOf(CBaseWorker* worker);

/// Whether the context's thread runs, without which the bus carries nothing.
bool contextRuns();
/// The same before the use of a service; a log line says when not.
bool contextRunsFor(const std::string& service);

/// A session id that no other session of this process has.
FdbSessionId_t nextSessionId();

}  // namespace fdb
