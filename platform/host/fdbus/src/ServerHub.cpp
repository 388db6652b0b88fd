#include "ServerHub.h"

#include <host/Log.h>
#include <host/RuntimeDir.h>

#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <new>
#include <string_view>

namespace fdb {

using qvn::host::kLogError;
using qvn::host::kLogFatal;

bool ServerSession::onFrame(const FrameView& frame) {
    const std::shared_ptr<ServerHub> server = hub.lock();
    return server && server->onFrame(shared_from_this(), frame);
}

void ServerSession::onClosed() {
    if (const std::shared_ptr<ServerHub> server = hub.lock()) {
        server->onClosed(id);
    }
}

ServerHub::ServerHub(std::shared_ptr<qvn::host::EventLoop> loop, CFdbBaseObject* owner)
    : Endpoint(std::move(loop), owner), mWatch(*mLoop, "fdbus: cannot watch the runtime directory"), mRetry(*mLoop) {}

void ServerHub::bind(const std::string& service) {
    mLoop->runExclusive([&] {
        std::string error;
        if (!mOwner || mSocket) {
            return;
        }
        mService = service;
        if (!publish(error)) {
            lgklog_print(kLogFatal, "fdbus: cannot offer '%s': %s", service.c_str(), error.c_str());
        }
    });
}

void ServerHub::unbind() {
    mLoop->post(whileOwned([this] {
        withdraw();
        while (!mSessions.empty()) {
            const FdbSessionId_t id = mSessions.begin()->first;
            mSessions.begin()->second->connection->close();
            onClosed(id);
        }
    }));
}

void ServerHub::closeAll() {
    withdraw();
    for (const auto& session : mSessions) {
        session.second->connection->close();
    }
    mSessions.clear();
    const qvn::sync::MutexLock lock(mMutex);
    mSubscribers.clear();
}

bool ServerHub::publish(std::string& error) {
    auto socket = std::make_unique<ServiceSocket>();
    if (!socket->open(mService, error)) {
        return false;
    }
    if (const std::error_code code = mListener.open(*mLoop, socket->takeFd())) {
        error = code.message();
        return false;
    }
    mSocket = std::move(socket);
    mWatch.start(qvn::host::runtimeDir(), whileOwned([this] { keepPublished(); }));
    awaitClient();
    return true;
}

void ServerHub::keepPublished() {
    if (mSocket && mSocket->isPublished()) {
        return;
    }
    withdraw();
    bool published = false;
    std::string error;
    try {
        published = publish(error);
    } catch (const std::bad_alloc&) {
        withdraw();
        error = "out of memory";
    }
    if (published) {
        mRetry.succeeded();
        lgklog_print(kLogError, "fdbus: the socket of '%s' was removed and has been made again", mService.c_str());
        return;
    }
    qvn::host::onceThereIsMemory([&] {
        mRetry.later("fdbus: cannot make the socket of '" + mService + "' again: " + error,
                     whileOwned([this] { keepPublished(); }));
    });
}

void ServerHub::withdraw() {
    mListener.close();
    mWatch.stop();
    mRetry.stop();
    mSocket.reset();
}

void ServerHub::awaitClient() {
    mListener.awaitReadable(whileOwned([this] { acceptClients(); }));
}

void ServerHub::acceptClients() {
    std::error_code error;
    try {
        error = acceptThoseThatWait();
    } catch (const std::bad_alloc&) {
        error = std::make_error_code(std::errc::not_enough_memory);
    }
    if (error) {
        qvn::host::onceThereIsMemory([&] {
            mRetry.later("fdbus: service '" + mService + "' cannot accept a client: " + error.message(),
                         whileOwned([this] { acceptClients(); }));
        });
    }
}

std::error_code ServerHub::acceptThoseThatWait() {
    while (mListener) {  // the owner's callback may end the service
        qvn::host::UniqueFd fd(::accept4(mListener.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
        if (fd) {
            mRetry.succeeded();
            openSession(std::move(fd));
        } else if (errno == EAGAIN) {
            awaitClient();
            return {};
        } else if (errno != EINTR && errno != ECONNABORTED) {
            return qvn::host::lastError();
        }
    }
    return {};
}

void ServerHub::openSession(qvn::host::UniqueFd fd) {
    const FdbSessionId_t id = nextSessionId();
    const std::string label = "client " + std::to_string(id) + " of '" + mService + "'";
    if (!isSameUser(fd.get(), label)) {
        return;
    }
    std::error_code error;
    const std::shared_ptr<Connection> connection = Connection::open(*mLoop, std::move(fd), label, error);
    if (!connection) {
        lgklog_print(kLogError, "fdbus: cannot serve %s: %s", label.c_str(), error.message().c_str());
        return;
    }
    const auto session =
        std::make_shared<ServerSession>(std::static_pointer_cast<ServerHub>(shared_from_this()), id, connection);
    const bool first = mSessions.empty();
    const auto entry = mSessions.emplace(id, session).first;
    try {
        connection->start(session);
    } catch (const std::bad_alloc&) {
        mSessions.erase(entry);
        throw;
    }
    Callbacks::online(mOwner, id, first);
}

bool ServerHub::onFrame(const std::shared_ptr<ServerSession>& session, const FrameView& frame) {
    const auto job = std::make_shared<CFdbMessage>(frame, session->id, session);
    CBaseJob::Ptr ref = job;
    CFdbMsgSubscribeList list;
    switch (frame.kind) {
        case FrameKind::Subscribe:
            if (!readSubscribeList(frame, list)) {
                return false;
            }
            subscribe(*session, list);
            job->subscribeList(std::move(list));
            Callbacks::subscribe(mOwner, ref);
            return true;
        case FrameKind::Unsubscribe:
            if (!readSubscribeList(frame, list)) {
                return false;
            }
            unsubscribe(*session, list);
            return true;
        case FrameKind::Send:
        case FrameKind::Invoke:
            Callbacks::invoke(mOwner, ref);
            return true;
        case FrameKind::Status:
            Callbacks::status(mOwner, ref, frame.code, "");
            return true;
        case FrameKind::Reply:
        case FrameKind::Broadcast:
            break;
    }
    return false;
}

void ServerHub::onClosed(FdbSessionId_t session) {
    const auto found = mSessions.find(session);
    if (found == mSessions.end()) {
        return;
    }
    forget(found->second->connection);
    mSessions.erase(found);
    Callbacks::offline(mOwner, session, mSessions.empty());
}

/// Takes a connection off a topic, and the topic off its code when nobody is left. Returns the topic after it.
ServerHub::Topics::iterator ServerHub::leave(Topics& topics, Topics::iterator topic,
                                             const std::shared_ptr<Connection>& connection) {
    Connections& subscribers = topic->second;
    subscribers.erase(std::remove(subscribers.begin(), subscribers.end(), connection), subscribers.end());
    return subscribers.empty() ? topics.erase(topic) : std::next(topic);
}

void ServerHub::subscribe(ServerSession& session, CFdbMsgSubscribeList& list) {
    const qvn::sync::MutexLock lock(mMutex);
    for (const CFdbMsgSubscribeItem& item : list) {
        Connections& subscribers = mSubscribers[item.msg_code()][item.filter()];
        if (std::find(subscribers.begin(), subscribers.end(), session.connection) == subscribers.end()) {
            subscribers.push_back(session.connection);
        }
    }
}

void ServerHub::unsubscribe(const ServerSession& session, const CFdbMsgSubscribeList& list) {
    const qvn::sync::MutexLock lock(mMutex);
    for (const CFdbMsgSubscribeItem& item : list) {
        const auto code = mSubscribers.find(item.msg_code());
        if (code == mSubscribers.end()) {
            continue;
        }
        Topics& topics = code->second;
        for (auto topic = topics.begin(); topic != topics.end();) {
            const bool named = !item.has_filter() || topic->first == item.filter();
            topic = named ? leave(topics, topic, session.connection) : std::next(topic);
        }
        if (topics.empty()) {
            mSubscribers.erase(code);
        }
    }
}

void ServerHub::forget(const std::shared_ptr<Connection>& connection) {
    const qvn::sync::MutexLock lock(mMutex);
    for (auto code = mSubscribers.begin(); code != mSubscribers.end();) {
        Topics& topics = code->second;
        for (auto topic = topics.begin(); topic != topics.end();) {
            topic = leave(topics, topic, connection);
        }
        code = topics.empty() ? mSubscribers.erase(code) : std::next(code);
    }
}

void ServerHub::answer(const ServerSession& session, FdbMsgCode_t code, const char* topic, FrameBuilder& frame) {
    const qvn::sync::MutexLock lock(mMutex);
    const auto found = mSubscribers.find(code);
    if (found == mSubscribers.end()) {
        return;
    }
    const auto isSubscribed = [&](std::string_view name) {
        const auto subscribers = found->second.find(name);
        return subscribers != found->second.end() &&
               std::count(subscribers->second.begin(), subscribers->second.end(), session.connection) != 0;
    };
    if (isSubscribed("") || (topic && isSubscribed(topic))) {
        session.connection->send(frame.bytes());
    }
}

bool ServerHub::invoke(FdbSessionId_t receiver, FrameBuilder& frame) {
    mLoop->post(whileOwned([this, receiver, request = std::string(frame.bytes())] {
        const auto session = mSessions.find(receiver);
        if (session != mSessions.end()) {
            session->second->connection->send(request);
        }
    }));
    return contextRuns();
}

bool ServerHub::broadcast(FdbMsgCode_t code, const char* topic, FrameBuilder& frame) {
    if (!contextRuns()) {
        return false;
    }
    const qvn::sync::MutexLock lock(mMutex);
    const auto found = mSubscribers.find(code);
    if (found == mSubscribers.end()) {
        return true;
    }
    const auto sendTo = [&](std::string_view name) {
        const auto subscribers = found->second.find(name);
        if (subscribers != found->second.end()) {
            for (const std::shared_ptr<Connection>& connection : subscribers->second) {
                connection->send(frame.bytes());
            }
        }
    };
    sendTo("");
    if (topic && *topic != '\0') {
        sendTo(topic);
    }
    return true;
}

}  // namespace fdb
