#pragma once

#include "Writer.h"

#include <host/UniqueFd.h>
#include <sync/Mutex.h>

#include <chrono>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace fdb {

/// The sending half of a connection; any thread may use it.
///
/// A lone frame is written at once by the thread that sends it. Frames that follow each other closely are gathered: the
/// Writer, or the sender of the frame that fills the batch, writes them together. What the peer does not take waits in
/// a queue of bounded size; a peer that overruns it is disconnected.
class Output final : public Queued, public std::enable_shared_from_this<Output> {
public:
    /// @param label names the other side in log lines
    Output(qvn::host::UniqueFd fd, std::string label) : mFd(std::move(fd)), mLabel(std::move(label)) {}

    /// False when the connection has ended.
    bool send(std::string_view frame);
    /// Ends the connection in both directions, so that whoever reads it sees its end. What the kernel does not take at
    /// once is dropped.
    void close() override;

    bool flush() override;
    int fd() const override { return mFd.get(); }

private:
    using Clock = std::chrono::steady_clock;

    size_t queuedBytes() const QVN_REQUIRES(mMutex) { return mQueue.size() - mSent; }
    void write() QVN_REQUIRES(mMutex);
    void breakOff() QVN_REQUIRES(mMutex);

    const qvn::host::UniqueFd mFd;
    const std::string mLabel;

    // Held across writes, none of which waits.
    qvn::sync::Mutex mMutex;
    bool mClosed QVN_GUARDED_BY(mMutex) = false;
    std::vector<char> mQueue QVN_GUARDED_BY(mMutex);  // of these bytes, the first mSent are written
    size_t mSent QVN_GUARDED_BY(mMutex) = 0;
    bool mFull QVN_GUARDED_BY(mMutex) = false;          // the kernel's buffer
    bool mLeftToWriter QVN_GUARDED_BY(mMutex) = false;  // it will call flush()
    Clock::time_point mLastSend QVN_GUARDED_BY(mMutex);
};

}  // namespace fdb
