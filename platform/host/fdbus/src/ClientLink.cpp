#include "ClientLink.h"

#include "ServiceAddress.h"

#include <host/Log.h>
#include <host/RuntimeDir.h>
#include <host/ServiceSocket.h>

#include <chrono>
#include <new>

namespace fdb {
namespace {

FrameView emptyReply(FdbMsgCode_t code, uint32_t serial) {
    static const uint8_t nothing = 0;
    return FrameView{FrameKind::Status, code, serial, {}, &nothing, 0};
}

}  // namespace

ClientLink::ClientLink(std::shared_ptr<qvn::host::EventLoop> loop, CFdbBaseObject* owner)
    : Endpoint(std::move(loop), owner), mWatch(*mLoop, "fdbus: cannot watch the runtime directory"), mRetry(*mLoop) {}

void ClientLink::connect(const std::string& service) {
    std::string error;
    const bool possible = qvn::host::serviceSocketPath(service, nullptr, &error);
    if (!possible || !qvn::host::ensureRuntimeDir(&error)) {
        lgklog_print(qvn::host::kLogFatal, "fdbus: cannot reach '%s': %s%s", service.c_str(), error.c_str(),
                     possible ? "; trying again" : "");
    }
    if (!possible) {
        return;
    }
    // A service that is there is not to miss what is sent between here and the loop's turn to connect: as long as
    // something is under way that comes before it, a send takes the way over the loop, too.
    const std::shared_ptr<void> before = std::make_shared<char>();
    {
        const qvn::sync::MutexLock lock(mMutex);
        mBeforeSends = before;
    }
    mLoop->post(whileOwned([this, service, before] {
        dropConnection();
        qvn::host::onceThereIsMemory([&] { mService = service; });
        mWanted = true;
        watch();
    }));
}

/// Waits for the service, as soon as there is a runtime directory for it to be in.
void ClientLink::watch() {
    bool watches = false;
    try {
        watches = qvn::host::ensureRuntimeDir(nullptr);  // the reason is in the log
        if (watches) {
            mWatch.start(qvn::host::runtimeDir(), whileOwned([this] { look(); }));
        }
    } catch (const std::bad_alloc&) {
        watches = false;
    }
    if (watches) {
        look();
    } else {
        qvn::host::onceThereIsMemory([this] { mRetry.later("", whileOwned([this] { watch(); })); });
    }
}

void ClientLink::disconnect() {
    mOnline = false;
    mLoop->post(whileOwned([this] {
        mWanted = false;
        mWatch.stop();
        mRetry.stop();
        dropConnection();
    }));
}

void ClientLink::closeAll() {
    mWanted = false;
    mOnline = false;
    mWatch.stop();
    mRetry.stop();
    mRequests.clear();
    if (const std::shared_ptr<Connection> connection = current()) {
        connection->close();
    }
    const qvn::sync::MutexLock lock(mMutex);
    mConnection.reset();
}

/// Connects if the service is there.
void ClientLink::look() {
    if (!mWanted || current()) {
        return;
    }
    std::error_code error;
    try {
        error = open();
    } catch (const std::bad_alloc&) {
        error = std::make_error_code(std::errc::not_enough_memory);
    }
    if (error && error != std::errc::no_such_file_or_directory && error != std::errc::connection_refused) {
        retryLater("connect to", error);
    }
}

std::error_code ClientLink::open() {
    std::error_code error;
    qvn::host::UniqueFd fd = qvn::host::connectToService(mService, error);
    const std::string label = "service '" + mService + "'";
    if (error || !isSameUser(fd.get(), label)) {
        return error;
    }
    const std::shared_ptr<Connection> connection = Connection::open(*mLoop, std::move(fd), label, error);
    if (error) {
        return error;
    }
    connection->start(std::static_pointer_cast<ClientLink>(shared_from_this()));
    {
        const qvn::sync::MutexLock lock(mMutex);
        mConnection = connection;
    }
    mSession = nextSessionId();
    mHeardFrom = false;
    mOnline = true;
    Callbacks::online(mOwner, mSession, true);
    return {};
}

void ClientLink::retryLater(const char* what, const std::error_code& reason) {
    qvn::host::onceThereIsMemory([&] {
        mRetry.later(std::string("fdbus: cannot ") + what + " service '" + mService + "': " + reason.message(),
                     whileOwned([this] { look(); }));
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
        // A service that ends every session would keep this loop busy.
        retryLater("stay connected with", std::make_error_code(std::errc::connection_reset));
    }
}

bool ClientLink::onFrame(const FrameView& frame) {
    if (frame.kind == FrameKind::Subscribe || frame.kind == FrameKind::Unsubscribe || frame.kind == FrameKind::Send) {
        return false;
    }
    if (!mHeardFrom) {
        mHeardFrom = true;
        mRetry.succeeded();
    }
    CBaseJob::Ptr job = std::make_shared<CFdbMessage>(frame, mSession, nullptr);
    if (frame.kind == FrameKind::Broadcast) {
        Callbacks::broadcast(mOwner, job);
        return true;
    }
    if (frame.kind == FrameKind::Invoke) {
        Callbacks::invoke(mOwner, job);
        FrameBuilder answer(FrameKind::Status, FDB_ST_AUTO_REPLY_OK, frame.serial, nullptr);
        send(answer);
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
    std::shared_ptr<Connection> connection;
    {
        const qvn::sync::MutexLock lock(mMutex);
        if (const std::shared_ptr<void> before = mBeforeSends.lock()) {
            mLoop->post(whileOwned([this, before, late = std::string(frame.bytes())] {
                if (const std::shared_ptr<Connection> made = current()) {
                    made->send(late);
                }
            }));
            return true;
        }
        connection = mConnection;
    }
    if (connection) {
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
    mLoop->post(whileOwned([this, serial, code, timeout, request = std::string(frame.bytes())] {
        awaitReply(serial, code, timeout);
        const std::shared_ptr<Connection> connection = current();
        if (!connection || !connection->send(request)) {
            failRequest(serial, FDB_ST_OFFLINE, "the service is not there");
        }
    }));
    return true;
}

void ClientLink::awaitReply(uint32_t serial, FdbMsgCode_t code, int32_t timeout) {
    Request& request = mRequests.emplace(serial, Request{code, qvn::host::Timer(*mLoop)}).first->second;
    if (timeout > 0) {
        request.timer.start(std::chrono::milliseconds(timeout),
                            whileOwned([this, serial] { failRequest(serial, FDB_ST_TIMEOUT, "no reply in time"); }));
    }
}

void ClientLink::failRequest(uint32_t serial, int32_t error, const char* text) {
    const auto found = mRequests.find(serial);
    if (found == mRequests.end()) {
        return;
    }
    const FrameView nothing = emptyReply(found->second.code, serial);
    mRequests.erase(found);
    CBaseJob::Ptr job;
    qvn::host::onceThereIsMemory([&] { job = std::make_shared<CFdbMessage>(nothing, mSession, nullptr); });
    Callbacks::status(mOwner, job, error, text);
}

std::shared_ptr<Connection> ClientLink::current() {
    const qvn::sync::MutexLock lock(mMutex);
    return mConnection;
}

}  // namespace fdb
