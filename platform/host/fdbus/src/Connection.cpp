#include "Connection.h"

#include <lgklog/lgklog.h>
#include <sys/socket.h>

#include <asio/buffer.hpp>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>

namespace fdb {

using qvn::sync::MutexLock;

namespace {

constexpr size_t kMebibyte = size_t{1024} * 1024;
constexpr size_t kReadBytes = size_t{64} * 1024;

/// Frames that come closer than this to the one before are gathered instead of written one by one.
constexpr std::chrono::microseconds kGatherWindow(20);
/// A batch of this size is written by the thread that fills it.
constexpr size_t kBatchBytes = size_t{32} * 1024;

/// The most that may wait for one peer: $QVN_HOST_QUEUE_MIB mebibytes, 64 by default.
size_t queueLimit() {
    static const size_t limit = [] {
        const char* text = std::getenv("QVN_HOST_QUEUE_MIB");
        const long mebibytes = text ? std::strtol(text, nullptr, 10) : 0;
        return static_cast<size_t>(mebibytes >= 1 && mebibytes <= 4096 ? mebibytes : 64) * kMebibyte;
    }();
    return limit;
}

ssize_t sendSome(int fd, const char* data, size_t size) {
    ssize_t sent = 0;
    do {
        sent = ::send(fd, data, size, MSG_NOSIGNAL | MSG_DONTWAIT);
    } while (sent < 0 && errno == EINTR);
    return sent;
}

}  // namespace

Connection::Connection(EventLoop& loop, Socket socket, std::string label)
    : mLoop(loop), mSocket(std::move(socket)), mLabel(std::move(label)), mReadBuffer(kReadBytes) {}

void Connection::start(std::weak_ptr<ConnectionHandler> handler) {
    mHandler = std::move(handler);
    read();
}

void Connection::read() {
    mSocket.async_read_some(
        asio::buffer(mReadBuffer.data() + mReadEnd, mReadBuffer.size() - mReadEnd),
        [self = shared_from_this()](const std::error_code& error, size_t bytes) { self->onRead(error, bytes); });
}

void Connection::onRead(const std::error_code& error, size_t bytes) {
    const std::shared_ptr<ConnectionHandler> handler = mHandler.lock();
    if (!handler) {
        return;
    }
    if (error) {
        end(nullptr);
        return;
    }
    mReadEnd += bytes;
    try {
        if (!dispatch(*handler)) {
            return;
        }
    } catch (const std::bad_alloc&) {
        end("met a lack of memory");
        return;
    }
    // Move what is left of an incomplete frame to the front, and make room for the whole of it.
    if (mReadBegin != 0) {
        std::memmove(mReadBuffer.data(), mReadBuffer.data() + mReadBegin, mReadEnd - mReadBegin);
        mReadEnd -= mReadBegin;
        mReadBegin = 0;
    }
    read();
}

/// Walks the complete frames of the read buffer. False when the connection has ended.
bool Connection::dispatch(ConnectionHandler& handler) {
    for (;;) {
        FrameView frame;
        size_t used = 0;
        const uint8_t* begin = mReadBuffer.data() + mReadBegin;
        switch (readFrame(begin, mReadEnd - mReadBegin, frame, used)) {
            case FrameResult::Malformed:
                end("sent a malformed frame");
                return false;
            case FrameResult::Incomplete:
                if (used > mReadBuffer.size()) {
                    mReadBuffer.resize(used);
                } else if (mReadEnd == mReadBegin && mReadBuffer.size() > kReadBytes) {
                    mReadBuffer = std::vector<uint8_t>(kReadBytes);  // the memory of a large frame is not kept
                    mReadBegin = mReadEnd = 0;
                }
                return true;
            case FrameResult::Complete:
                mReadBegin += used;
                if (!handler.onFrame(frame)) {
                    end("sent a malformed frame");
                    return false;
                }
                if (mHandler.expired()) {
                    return false;
                }
                break;
        }
    }
}

void Connection::end(const char* reason) {
    if (reason) {
        lgklog_print(1, "fdbus: %s %s, the session ends", mLabel.c_str(), reason);
    }
    const std::shared_ptr<ConnectionHandler> handler = mHandler.lock();
    close();
    if (handler) {
        handler->onClosed();
    }
}

bool Connection::send(std::string_view frame) {
    const MutexLock lock(mMutex);
    if (mClosed) {
        return false;
    }
    const Clock::time_point now = Clock::now();
    const bool lone = now - mLastSend >= kGatherWindow;
    mLastSend = now;
    if (lone && queuedBytes() == 0) {
        return writeDirect(frame);
    }
    if (queuedBytes() + frame.size() > queueLimit()) {
        lgklog_print(1, "fdbus: %s has fallen %zu MiB behind and is disconnected", mLabel.c_str(),
                     queueLimit() / kMebibyte);
        breakOff();
        return false;
    }
    mGathered.insert(mGathered.end(), frame.begin(), frame.end());
    if (mGathered.size() >= kBatchBytes) {
        flush();
    } else {
        scheduleFlush();
    }
    return true;
}

bool Connection::writeDirect(std::string_view frame) {
    const ssize_t sent = sendSome(mSocket.native_handle(), frame.data(), frame.size());
    if (sent < 0 && errno != EAGAIN) {
        breakOff();
        return false;
    }
    const size_t taken = static_cast<size_t>(std::max<ssize_t>(sent, 0));
    if (taken < frame.size()) {
        mInFlight.assign(frame.begin() + static_cast<std::ptrdiff_t>(taken), frame.end());
        mInFlightSent = 0;
        awaitWritable();
    }
    return true;
}

void Connection::scheduleFlush() {
    if (mFlushScheduled || mWriting || mAwaitsWritable) {
        return;
    }
    mFlushScheduled = true;
    mLoop.post([self = shared_from_this()] {
        const MutexLock lock(self->mMutex);
        self->mFlushScheduled = false;
        self->flush();
    });
}

/// Writes all that has been gathered, without holding the lock meanwhile: senders go on gathering.
void Connection::flush() {
    if (mWriting || mAwaitsWritable) {
        return;
    }
    mWriting = true;
    while (!mClosed && queuedBytes() != 0) {
        if (mInFlightSent == mInFlight.size()) {
            mInFlight.clear();
            mInFlightSent = 0;
            mInFlight.swap(mGathered);
        }
        const char* const data = mInFlight.data() + mInFlightSent;
        const size_t size = mInFlight.size() - mInFlightSent;
        mMutex.unlock();
        const ssize_t sent = sendSome(mSocket.native_handle(), data, size);
        const int error = errno;
        mMutex.lock();
        if (sent >= 0) {
            mInFlightSent += static_cast<size_t>(sent);
        } else if (error == EAGAIN) {
            awaitWritable();
            break;
        } else {
            breakOff();
        }
    }
    mWriting = false;
}

void Connection::awaitWritable() {
    mAwaitsWritable = true;
    mLoop.post([self = shared_from_this()] {
        self->mSocket.async_wait(Socket::wait_write, [self](const std::error_code&) {
            const MutexLock lock(self->mMutex);
            self->mAwaitsWritable = false;
            self->flush();
        });
    });
}

void Connection::close() {
    mHandler.reset();
    const MutexLock lock(mMutex);
    flush();  // what the kernel takes now still reaches the peer
    breakOff();
}

/// Ends the stream in both directions: the pending read returns, and reports the end on the loop. The descriptor itself
/// stays open until nobody uses the connection any more, so that no thread writes to a stranger's.
void Connection::breakOff() {
    if (!mClosed) {
        mClosed = true;
        ::shutdown(mSocket.native_handle(), SHUT_RDWR);
    }
}

}  // namespace fdb
