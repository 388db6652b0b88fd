#pragma once

#include "EventLoop.h"
#include "Frame.h"

#include <sync/Mutex.h>
#include <asio/local/stream_protocol.hpp>

#include <chrono>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace fdb {

/// Receives what happens on a connection, on the loop's thread.
class ConnectionHandler {
public:
    virtual ~ConnectionHandler() = default;
    /// False when the frame makes no sense; the connection then ends.
    virtual bool onFrame(const FrameView& frame) = 0;
    /// Once, when the connection has ended for another reason than close().
    virtual void onClosed() = 0;
};

/// One stream of frames between a client and a server.
///
/// The loop's thread reads; any thread may send. A lone frame is written at once by the thread that sends it. Frames
/// that follow each other closely are gathered: the loop, or the sender of the frame that fills the batch, writes them
/// together. What the peer does not take waits in a queue of bounded size; a peer that overruns it is disconnected.
class Connection : public std::enable_shared_from_this<Connection> {
public:
    using Socket = asio::local::stream_protocol::socket;

    /// @param label names the other side in log lines
    Connection(EventLoop& loop, Socket socket, std::string label);

    /// Starts to read. Call it on the loop.
    void start(std::weak_ptr<ConnectionHandler> handler);
    /// False when the connection has ended.
    bool send(std::string_view frame);
    /// Ends the connection; the handler is not told. What the kernel does not take at once is dropped.
    void close();

private:
    using Clock = std::chrono::steady_clock;

    void read();
    void onRead(const std::error_code& error, size_t bytes);
    bool dispatch(ConnectionHandler& handler);
    void end(const char* reason);

    size_t queuedBytes() const QVN_REQUIRES(mMutex) { return mGathered.size() + mInFlight.size() - mInFlightSent; }
    bool writeDirect(std::string_view frame) QVN_REQUIRES(mMutex);
    void scheduleFlush() QVN_REQUIRES(mMutex);
    void flush() QVN_REQUIRES(mMutex);
    void awaitWritable() QVN_REQUIRES(mMutex);
    void breakOff() QVN_REQUIRES(mMutex);

    EventLoop& mLoop;
    Socket mSocket;
    const std::string mLabel;
    std::weak_ptr<ConnectionHandler> mHandler;

    // The loop's thread only: received bytes that are not walked yet are [mReadBegin, mReadEnd).
    std::vector<uint8_t> mReadBuffer;
    size_t mReadBegin = 0;
    size_t mReadEnd = 0;

    qvn::sync::Mutex mMutex;
    bool mClosed QVN_GUARDED_BY(mMutex) = false;
    std::vector<char> mGathered QVN_GUARDED_BY(mMutex);  // frames that wait for the next write
    std::vector<char> mInFlight QVN_GUARDED_BY(mMutex);  // frames of the write that is under way
    size_t mInFlightSent QVN_GUARDED_BY(mMutex) = 0;
    bool mWriting QVN_GUARDED_BY(mMutex) = false;         // a thread is in flush() without the lock
    bool mAwaitsWritable QVN_GUARDED_BY(mMutex) = false;  // the kernel's buffer is full
    bool mFlushScheduled QVN_GUARDED_BY(mMutex) = false;
    Clock::time_point mLastSend QVN_GUARDED_BY(mMutex);
};

}  // namespace fdb
