#pragma once

namespace qvn::tools {

/// SIGINT and SIGTERM as a file descriptor, and SIGPIPE ignored: the end of a tool is an event of its main loop.
/// Made before the first thread starts, since threads inherit the blocked signals.
class StopSignals {
public:
    StopSignals();
    ~StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

    /// Readable once a stop was asked for.
    int fd() const { return fd_; }

private:
    int fd_;
};

/// Wakes a thread that waits for file descriptors. notify() may be called from any thread.
class WakeUp {
public:
    WakeUp();
    ~WakeUp();
    WakeUp(const WakeUp&) = delete;
    WakeUp& operator=(const WakeUp&) = delete;

    int fd() const { return fd_; }
    void notify();
    void clear();

private:
    int fd_;
};

}  // namespace qvn::tools
