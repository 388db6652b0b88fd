#include "ClientLink.h"

#include "ServiceAddress.h"

#include <host/RuntimeDir.h>
#include <host/ServiceSocket.h>
#include <lgklog/lgklog.h>

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>

namespace fdb {
namespace {

/// How long to wait when the system is short of something that nothing reports the return of.
constexpr std::chrono::milliseconds kRetryPause(100);

FrameView emptyReply(FdbMsgCode_t code, uint32_t serial) {
    static const uint8_t nothing = 0;
    return FrameView{FrameKind::Status, code, serial, {}, &nothing, 0};
}

}  // namespace

void ClientLink::connect(const std::string& service) {
    std::string error;
    if (!qvn::host::ensureRuntimeDir(&error) || !qvn::host::serviceSocketPath(service, nullptr, &error)) {
        lgklog_print(0, "fdbus: cannot reach '%s': %s", service.c_str(), error.c_str());
        return;
    }
    mLoop->post([weak = weak_from_this(), service] {
        const auto self = weak.lock();
        if (self && self->mOwner) {
            self->dropConnection();
            self->mService = service;
            self->mWanted = true;
            self->look();
        }
    });
}

void ClientLink::disconnect() {
    mOnline = false;
    mLoop->post([weak = weak_from_this()] {
        const auto self = weak.lock();
        if (self && self->mOwner) {
            self->mWanted = false;
            self->mWatchDescriptor.reset();
            self->mRetry.reset();
            self->dropConnection();
        }
    });
}

void ClientLink::closeAll() {
    mWanted = false;
    mOnline = false;
    mWatchDescriptor.reset();
    mRetry.reset();
    mRequests.clear();
    if (const std::shared_ptr<Connection> connection = current()) {
        connection->close();
    }
    const qvn::sync::MutexLock lock(mMutex);
    mConnection.reset();
}

/// Watches the runtime directory, and then looks whether the service is there already.
void ClientLink::look() {
    if (!mWanted || mOnline) {
        return;
    }
    if (!watchDirectory()) {
        retryLater("watch the runtime directory");
        return;
    }
    tryConnect();
}

bool ClientLink::watchDirectory() {
    if (mWatchDescriptor) {
        return true;
    }
    if (!mWatch.open(qvn::host::runtimeDir())) {
        return false;
    }
    mWatchDescriptor = mLoop->adopt(UniqueFd(::fcntl(mWatch.fd(), F_DUPFD_CLOEXEC, 0)));
    if (!mWatchDescriptor) {
        return false;
    }
    awaitDirectory();
    return true;
}

void ClientLink::awaitDirectory() {
    mWatchDescriptor->async_wait(asio::posix::stream_descriptor::wait_read,
                                 [weak = weak_from_this()](const std::error_code& error) {
                                     const auto self = weak.lock();
                                     if (self && !error && self->mWatchDescriptor) {
                                         self->onDirectoryChange();
                                     }
                                 });
}

void ClientLink::onDirectoryChange() {
    const qvn::host::DirectoryWatch::Changes changes = mWatch.drain();
    awaitDirectory();
    if (changes.rescan ||
        std::count(changes.names.begin(), changes.names.end(), qvn::host::serviceSocketName(mService)) != 0) {
        look();
    }
}

void ClientLink::tryConnect() {
    UniqueFd fd(qvn::host::connectToService(mService));
    if (!fd) {
        if (errno != ENOENT && errno != ECONNREFUSED) {
            retryLater("connect");
        }
        return;
    }
    const std::string label = "service '" + mService + "'";
    if (!isSameUser(fd.get(), label)) {
        return;
    }
    const std::shared_ptr<Connection> connection = Connection::open(*mLoop, std::move(fd), label);
    if (!connection) {
        retryLater("connect");
        return;
    }
    {
        const qvn::sync::MutexLock lock(mMutex);
        mConnection = connection;
    }
    mSession = nextSessionId();
    mHeardFrom = false;
    mOnline = true;
    connection->start(weak_from_this());
    Callbacks::online(mOwner, mSession, true);
}

void ClientLink::retryLater(const char* what) {
    lgklog_print(1, "fdbus: cannot %s for service '%s': %s; trying again", what, mService.c_str(),
                 std::strerror(errno));
    mRetry = std::make_unique<asio::steady_timer>(mLoop->context(), kRetryPause);
    mRetry->async_wait([weak = weak_from_this()](const std::error_code& error) {
        const auto self = weak.lock();
        if (self && !error) {
            self->look();
        }
    });
}

/// Ends the connection if there is one, and tells the owner.
void ClientLink::dropConnection() {
    if (const std::shared_ptr<Connection> connection = current()) {
        connection->close();
        onClosed();
    }
}

void ClientLink::onClosed() {
    {
        const qvn::sync::MutexLock lock(mMutex);
        mConnection.reset();
    }
    mOnline = false;
    while (!mRequests.empty()) {
        failRequest(mRequests.begin()->first, FDB_ST_OFFLINE, "the service went away");
    }
    Callbacks::offline(mOwner, mSession, true);
    if (!mReconnect || !mWanted) {
        return;
    }
    if (mHeardFrom) {
        look();
    } else {
        errno = ECONNRESET;
        retryLater("stay connected");  // a service that ends every session would keep this loop busy
    }
}

bool ClientLink::onFrame(const FrameView& frame) {
    if (frame.kind != FrameKind::Broadcast && frame.kind != FrameKind::Reply && frame.kind != FrameKind::Status) {
        return false;
    }
    mHeardFrom = true;
    CBaseJob::Ptr job = std::make_shared<CFdbMessage>(frame, mSession, nullptr);
    if (frame.kind == FrameKind::Broadcast) {
        Callbacks::broadcast(mOwner, job);
        return true;
    }
    if (mRequests.erase(frame.serial) == 0) {
        return true;  // its time was over
    }
    if (frame.kind == FrameKind::Reply) {
        Callbacks::reply(mOwner, job);
    } else {
        const std::string text(reinterpret_cast<const char*>(frame.payload), static_cast<size_t>(frame.size));
        Callbacks::status(mOwner, job, frame.code, text.c_str());
    }
    return true;
}

bool ClientLink::subscription(FrameKind kind, const CFdbMsgSubscribeList& list) {
    FrameBuilder frame(kind, 0, 0, nullptr);
    return frame.append(list) && send(frame);
}

bool ClientLink::send(FrameBuilder& frame) {
    if (!contextRuns()) {
        return false;
    }
    if (const std::shared_ptr<Connection> connection = current()) {
        connection->send(frame.bytes());
    }
    return true;
}

bool ClientLink::invoke(FdbMsgCode_t code, IFdbMsgBuilder& builder, int32_t timeout) {
    const uint32_t serial = mNextSerial++;
    FrameBuilder frame(FrameKind::Invoke, code, serial, nullptr);
    if (!frame.append(builder) || !contextRuns()) {
        return false;
    }
    // The request is entered on the loop before its answer can be read there.
    mLoop->post([weak = weak_from_this(), serial, code, timeout, request = std::string(frame.bytes())] {
        const auto self = weak.lock();
        if (!self || !self->mOwner) {
            return;
        }
        self->awaitReply(serial, code, timeout);
        const std::shared_ptr<Connection> connection = self->current();
        if (!connection || !connection->send(request)) {
            self->failRequest(serial, FDB_ST_OFFLINE, "the service is not there");
        }
    });
    return true;
}

void ClientLink::awaitReply(uint32_t serial, FdbMsgCode_t code, int32_t timeout) {
    Request& request = mRequests[serial];
    request.code = code;
    if (timeout <= 0) {
        return;
    }
    request.timer = std::make_unique<asio::steady_timer>(mLoop->context(), std::chrono::milliseconds(timeout));
    request.timer->async_wait([weak = weak_from_this(), serial](const std::error_code& error) {
        const auto self = weak.lock();
        if (self && !error) {
            self->failRequest(serial, FDB_ST_TIMEOUT, "no reply in time");
        }
    });
}

void ClientLink::failRequest(uint32_t serial, int32_t error, const char* text) {
    const auto found = mRequests.find(serial);
    if (found == mRequests.end()) {
        return;
    }
    CBaseJob::Ptr job = std::make_shared<CFdbMessage>(emptyReply(found->second.code, serial), mSession, nullptr);
    mRequests.erase(found);
    Callbacks::status(mOwner, job, error, text);
}

std::shared_ptr<Connection> ClientLink::current() {
    const qvn::sync::MutexLock lock(mMutex);
    return mConnection;
}

}  // namespace fdb
