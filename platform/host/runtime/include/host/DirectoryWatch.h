#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "host/EventLoop.h"
#include "host/LoopDescriptor.h"
#include "host/Timer.h"

namespace qvn::host {

/// Calls back on a loop when something has changed in one directory: a file was made, closed after writing, moved in
/// or out, or deleted, or the directory itself was removed or made.
///
/// The watch follows the path: while the directory does not exist, or is a symbolic link, it waits for one to be made;
/// when one above it is moved or removed, likewise.
/// While the system is short of descriptors, watches or memory, it tries again, logs that once, and calls back when it
/// watches.
///
/// One thread at a time, as LoopDescriptor.
class DirectoryWatch {
public:
    /// @param what begins the log line: "fdbus: cannot watch the directory"
    DirectoryWatch(EventLoop& loop, std::string what) : mLoop(loop), mWhat(std::move(what)), mRetry(loop) {}

    /// Watches a directory from now on, in place of the one before.
    void start(const std::string& directory, std::function<void()> changed);
    /// When it returns, nothing will be called.
    void stop();

private:
    bool watch();
    void retry(const std::error_code& error);
    std::error_code open();
    /// Waits for the next events, at first settling anew when the watch may have to move.
    std::error_code await(bool moves);
    std::error_code settle();
    int watchOne(const std::string& directory, std::uint32_t mask);
    bool isThere() const { return mWatched == mDirectory; }
    bool takeEvents();
    void onReadable();
    void report();

    EventLoop& mLoop;
    const std::string mWhat;
    Retry mRetry;
    std::string mDirectory;
    std::shared_ptr<const std::function<void()>> mChanged;
    LoopDescriptor mInotify;
    std::string mWatched;       // the directory itself, or its nearest ancestor that exists
    std::vector<int> mWatches;  // of mWatched, and of each directory above it
};

}  // namespace qvn::host
