#pragma once

#include "Connection.h"
#include "Endpoint.h"

#include <host/DirectoryWatch.h>
#include <host/Timer.h>
#include <sync/Mutex.h>

#include <atomic>
#include <map>
#include <memory>
#include <string>
#include <system_error>

namespace fdb {

/// A client's way to its service: connects whenever the service's socket appears in the runtime directory.
class ClientLink : public Endpoint, public ConnectionHandler {
public:
    ClientLink(std::shared_ptr<qvn::host::EventLoop> loop, CFdbBaseObject* owner);

    /// A log line says when the service can never be reached.
    void connect(const std::string& service);
    void disconnect();
    bool connected() const { return mOnline; }

    bool subscription(FrameKind kind, const CFdbMsgSubscribeList& list) override;
    bool send(FrameBuilder& frame) override;
    bool invoke(FdbMsgCode_t code, IFdbMsgBuilder& builder, int32_t timeout) override;
    void enableReconnect(bool enable) override { mReconnect = enable; }

    bool onFrame(const FrameView& frame) override;
    void onClosed() override;

private:
    struct Request {
        FdbMsgCode_t code;
        qvn::host::Timer timer;
    };

    void closeAll() override;

    // On the loop's thread.
    void watch();
    void look();
    std::error_code open();
    void retryLater(const char* what, const std::error_code& reason);
    void dropConnection();
    void awaitReply(uint32_t serial, FdbMsgCode_t code, int32_t timeout);
    void failRequest(uint32_t serial, int32_t error, const char* text);

    std::shared_ptr<Connection> current();

    std::string mService;
    bool mWanted = false;
    qvn::host::DirectoryWatch mWatch;
    qvn::host::Retry mRetry;
    std::map<uint32_t, Request> mRequests;
    FdbSessionId_t mSession = FDB_INVALID_ID;
    bool mHeardFrom = false;  // something has arrived in this session

    std::atomic<bool> mOnline{false};
    std::atomic<bool> mReconnect{true};
    std::atomic<uint32_t> mNextSerial{1};

    qvn::sync::Mutex mMutex;
    std::shared_ptr<Connection> mConnection QVN_GUARDED_BY(mMutex);
    std::weak_ptr<void> mBeforeSends QVN_GUARDED_BY(mMutex);  // held by what the loop is to do before it
};

}  // namespace fdb
