#include "ServerHub.h"

#include <host/RuntimeDir.h>
#include <lgklog/lgklog.h>

#include <fcntl.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <iterator>
#include <string_view>

namespace fdb {
namespace {

/// How long to wait when the system is short of something that nothing reports the return of.
constexpr std::chrono::milliseconds kRetryPause(100);

}  // namespace

bool ServerSession::onFrame(const FrameView& frame) {
    const std::shared_ptr<ServerHub> server = hub.lock();
    return server && server->onFrame(shared_from_this(), frame);
}

void ServerSession::onClosed() {
    if (const std::shared_ptr<ServerHub> server = hub.lock()) {
        server->onClosed(id);
    }
}

void ServerHub::bind(const std::string& service) {
    mLoop->runExclusive([&] {
        if (mOwner && !mSocket) {
            mService = service;
            publish();
        }
    });
}

void ServerHub::unbind() {
    mLoop->post([weak = weak_from_this()] {
        const auto self = weak.lock();
        if (!self) {
            return;
        }
        self->withdraw();
        while (!self->mSessions.empty()) {
            const FdbSessionId_t id = self->mSessions.begin()->first;
            self->mSessions.begin()->second->connection->close();
            self->onClosed(id);
        }
    });
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

bool ServerHub::publish() {
    auto socket = std::make_unique<ServiceSocket>();
    if (!socket->open(mService)) {
        return false;
    }
    const bool watches = mWatch.open(qvn::host::runtimeDir());
    auto watch = watches ? mLoop->adopt(UniqueFd(::fcntl(mWatch.fd(), F_DUPFD_CLOEXEC, 0))) : nullptr;
    auto listener = watch ? mLoop->adopt(socket->takeFd()) : nullptr;
    if (!listener) {
        const int error = errno;
        lgklog_print(0, "fdbus: cannot offer '%s': %s", mService.c_str(), std::strerror(error));
        socket.reset();
        errno = error;
        return false;
    }
    mWatchDescriptor = std::move(watch);
    mListener = std::move(listener);
    mSocket = std::move(socket);
    awaitClient();
    awaitDirectory();
    return true;
}

void ServerHub::withdraw() {
    mListener.reset();
    mWatchDescriptor.reset();
    mRetry.reset();
    mSocket.reset();
}

void ServerHub::awaitClient() {
    mListener->async_wait(asio::posix::stream_descriptor::wait_read,
                          [weak = weak_from_this()](const std::error_code& error) {
                              const auto self = weak.lock();
                              if (self && !error && self->mListener) {
                                  self->acceptClients();
                              }
                          });
}

void ServerHub::acceptClients() {
    for (;;) {
        UniqueFd fd(::accept4(mListener->native_handle(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
        if (fd) {
            openSession(std::move(fd));
            if (!mListener) {
                return;  // the owner's callback ended the service
            }
        } else if (errno == EAGAIN) {
            awaitClient();
            return;
        } else if (errno != EINTR && errno != ECONNABORTED) {
            retryLater("accept a client", [this] { acceptClients(); });
            return;
        }
    }
}

void ServerHub::openSession(UniqueFd fd) {
    const FdbSessionId_t id = nextSessionId();
    const std::string label = "client " + std::to_string(id) + " of '" + mService + "'";
    if (!isSameUser(fd.get(), label)) {
        return;
    }
    const std::shared_ptr<Connection> connection = Connection::open(*mLoop, std::move(fd), label);
    if (!connection) {
        lgklog_print(1, "fdbus: cannot serve %s: %s", label.c_str(), std::strerror(errno));
        return;
    }
    const auto session = std::make_shared<ServerSession>(weak_from_this(), id, connection);
    const bool first = mSessions.empty();
    mSessions.emplace(id, session);
    Callbacks::online(mOwner, id, first);
    connection->start(session);
}

void ServerHub::awaitDirectory() {
    mWatchDescriptor->async_wait(asio::posix::stream_descriptor::wait_read,
                                 [weak = weak_from_this()](const std::error_code& error) {
                                     const auto self = weak.lock();
                                     if (self && !error && self->mWatchDescriptor) {
                                         self->onDirectoryChange();
                                     }
                                 });
}

void ServerHub::onDirectoryChange() {
    mWatch.drain();
    if (mSocket && mSocket->isPublished()) {
        awaitDirectory();
        return;
    }
    withdraw();
    if (publish()) {
        lgklog_print(1, "fdbus: the socket of '%s' was removed and has been made again", mService.c_str());
        return;
    }
    retryLater("make the socket again", [this] { onDirectoryChange(); });
}

template <typename Action>
void ServerHub::retryLater(const char* what, Action action) {
    lgklog_print(1, "fdbus: service '%s' cannot %s: %s; trying again", mService.c_str(), what, std::strerror(errno));
    mRetry = std::make_unique<asio::steady_timer>(mLoop->context(), kRetryPause);
    mRetry->async_wait([weak = weak_from_this(), action](const std::error_code& error) {
        const auto self = weak.lock();
        if (self && !error && self->mRetry) {
            action();
        }
    });
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
        case FrameKind::Reply:
        case FrameKind::Status:
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
