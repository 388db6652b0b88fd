#pragma once

#include <host/UniqueFd.h>
#include <sync/Mutex.h>

#include <poll.h>

#include <memory>
#include <system_error>
#include <vector>

namespace fdb {

class Output;

/// The process's thread that writes what senders leave behind: frames that were gathered, and what the kernel's buffer
/// had no room for. It never calls out of the bus, so that no frame waits for an application's callback.
class Writer {
public:
    /// The one instance; it is never destructed, and its thread ends with the process.
    static Writer& instance();

    /// Starts the thread with the first call. An error when the system is short of something.
    std::error_code ready();
    /// Has the output flushed soon. ready() comes first.
    void add(std::shared_ptr<Output> output);

private:
    Writer() = default;
    void run();
    void flushThoseWithRoom();
    void flushAdded();
    void awaitRoom(std::shared_ptr<Output> output);

    qvn::sync::Mutex mMutex;
    qvn::host::UniqueFd mWake QVN_GUARDED_BY(mMutex);  // an eventfd; set once
    std::vector<std::shared_ptr<Output>> mAdded QVN_GUARDED_BY(mMutex);

    // The thread's own.
    std::vector<std::shared_ptr<Output>> mTaken;
    std::vector<std::shared_ptr<Output>> mFull;  // the kernel's buffer is
    std::vector<pollfd> mPolled;                 // the eventfd, and then those of mFull
};

}  // namespace fdb
