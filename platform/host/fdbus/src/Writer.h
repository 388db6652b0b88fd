#pragma once

#include <host/UniqueFd.h>
#include <sync/Mutex.h>

#include <poll.h>

#include <memory>
#include <system_error>
#include <vector>

namespace fdb {

/// What the Writer writes: the bytes that wait for one peer.
class Queued {
public:
    /// Writes what waits. False when the kernel's buffer is full; call it again when there is room.
    virtual bool flush() = 0;
    /// Gives up what waits, and the connection.
    virtual void close() = 0;
    virtual int fd() const = 0;

protected:
    ~Queued() = default;
};

/// The process's thread that writes what senders leave behind: frames that were gathered, and what the kernel's buffer
/// had no room for. It never calls out of the bus, so that no frame waits for an application's callback.
class Writer {
public:
    /// The one instance; it is never destructed, and its thread ends with the process.
    static Writer& instance();

    /// Starts the thread with the first call. An error when the system is short of something.
    std::error_code ready();
    /// Has it flushed soon. ready() comes first.
    void add(std::shared_ptr<Queued> queued);

private:
    Writer() = default;
    void run();
    void flushThoseWithRoom();
    void flushAdded();
    void awaitRoom(std::shared_ptr<Queued> queued);

    qvn::sync::Mutex mMutex;
    qvn::host::UniqueFd mWake QVN_GUARDED_BY(mMutex);  // an eventfd; set once
    std::vector<std::shared_ptr<Queued>> mAdded QVN_GUARDED_BY(mMutex);

    // The thread's own.
    std::vector<std::shared_ptr<Queued>> mTaken;
    std::vector<std::shared_ptr<Queued>> mFull;  // the kernel's buffer is
    std::vector<pollfd> mPolled;                 // the eventfd, and then those of mFull
};

}  // namespace fdb
