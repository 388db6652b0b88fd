#include "Output.h"

#include <host/Log.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstdlib>

namespace fdb {

using qvn::sync::MutexLock;

namespace {

constexpr size_t kMebibyte = size_t{1024} * 1024;

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

bool Output::send(std::string_view frame) {
    const MutexLock lock(mMutex);
    if (mClosed) {
        return false;
    }
    const Clock::time_point now = Clock::now();
    const bool lone = now - mLastSend >= kGatherWindow;
    mLastSend = now;
    if (queuedBytes() != 0 && queuedBytes() + frame.size() > queueLimit()) {
        lgklog_print(qvn::host::kLogError, "fdbus: %s has fallen %zu MiB behind and is disconnected", mLabel.c_str(),
                     queueLimit() / kMebibyte);
        breakOff();
        return false;
    }
    mQueue.insert(mQueue.end(), frame.begin(), frame.end());
    if (!mFull && (lone || queuedBytes() >= kBatchBytes)) {
        write();
    }
    if (queuedBytes() != 0 && !mLeftToWriter) {
        Writer::instance().add(shared_from_this());
        mLeftToWriter = true;
    }
    return !mClosed;
}

bool Output::flush() {
    const MutexLock lock(mMutex);
    write();
    mLeftToWriter = mFull;
    return !mFull;
}

void Output::close() {
    const MutexLock lock(mMutex);
    write();
    breakOff();
}

/// Writes until the queue is empty or the kernel's buffer is full.
void Output::write() {
    mFull = false;
    while (queuedBytes() != 0) {
        const ssize_t sent = sendSome(mFd.get(), mQueue.data() + mSent, queuedBytes());
        if (sent >= 0) {
            mSent += static_cast<size_t>(sent);
        } else if (errno == EAGAIN) {
            mFull = true;
            break;
        } else {
            breakOff();
        }
    }
    if (mSent >= queuedBytes()) {  // not after each write, since it moves all the rest
        mQueue.erase(mQueue.begin(), mQueue.begin() + static_cast<std::ptrdiff_t>(mSent));
        mSent = 0;
    }
    if (mQueue.empty() && mQueue.capacity() > 2 * kBatchBytes) {
        mQueue = std::vector<char>();  // the memory of a long queue is not kept
    }
}

/// The descriptor itself stays open until nobody uses it any more, so that no thread writes to a stranger's.
void Output::breakOff() {
    mClosed = true;
    mQueue.clear();
    mSent = 0;
    ::shutdown(mFd.get(), SHUT_RDWR);
}

}  // namespace fdb
