#pragma once

#include "Connection.h"
#include "Endpoint.h"
#include "ServiceAddress.h"

#include <host/DirectoryWatch.h>
#include <host/LoopDescriptor.h>
#include <host/Timer.h>
#include <sync/Mutex.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <system_error>
#include <unordered_map>
#include <vector>

namespace fdb {

class ServerHub;

/// One client of a server.
class ServerSession : public ConnectionHandler, public std::enable_shared_from_this<ServerSession> {
public:
    ServerSession(std::weak_ptr<ServerHub> owner, FdbSessionId_t sessionId, std::shared_ptr<Connection> peer)
        : hub(std::move(owner)), id(sessionId), connection(std::move(peer)) {}

    bool onFrame(const FrameView& frame) override;
    void onClosed() override;

    const std::weak_ptr<ServerHub> hub;
    const FdbSessionId_t id;
    const std::shared_ptr<Connection> connection;
};

/// A server's sessions, and which of them subscribed what.
///
/// The service stays reachable: when its socket, or the whole runtime directory, is removed, it is made again.
class ServerHub : public Endpoint {
public:
    ServerHub(std::shared_ptr<qvn::host::EventLoop> loop, CFdbBaseObject* owner);

    /// A log line says when the service cannot be offered.
    void bind(const std::string& service);
    void unbind();

    bool invoke(FdbSessionId_t receiver, FrameBuilder& frame) override;
    bool broadcast(FdbMsgCode_t code, const char* topic, FrameBuilder& frame) override;
    /// A broadcast to one session, if that has subscribed it.
    void answer(const ServerSession& session, FdbMsgCode_t code, const char* topic, FrameBuilder& frame);

    // On the loop's thread, by the sessions.
    bool onFrame(const std::shared_ptr<ServerSession>& session, const FrameView& frame);
    void onClosed(FdbSessionId_t session);

private:
    using Connections = std::vector<std::shared_ptr<Connection>>;
    using Topics = std::map<std::string, Connections, std::less<>>;  // the empty one is for every topic

    void closeAll() override;

    // On the loop's thread.
    bool publish(std::string& error);
    void keepPublished();
    void withdraw();
    void awaitClient();
    void acceptClients();
    std::error_code acceptThoseThatWait();
    void openSession(qvn::host::UniqueFd fd);
    static Topics::iterator leave(Topics& topics, Topics::iterator topic,
                                  const std::shared_ptr<Connection>& connection);
    void subscribe(ServerSession& session, CFdbMsgSubscribeList& list);
    void unsubscribe(const ServerSession& session, const CFdbMsgSubscribeList& list);
    void forget(const std::shared_ptr<Connection>& connection);

    std::string mService;
    std::unique_ptr<ServiceSocket> mSocket;
    qvn::host::LoopDescriptor mListener;
    qvn::host::DirectoryWatch mWatch;
    qvn::host::Retry mRetry;
    std::map<FdbSessionId_t, std::shared_ptr<ServerSession>> mSessions;

    qvn::sync::Mutex mMutex;
    std::unordered_map<FdbMsgCode_t, Topics> mSubscribers QVN_GUARDED_BY(mMutex);
};

}  // namespace fdb
