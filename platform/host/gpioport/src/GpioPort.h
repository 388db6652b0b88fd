#pragma once

#include <host/EventLoop.h>
#include <host/Timer.h>
#include <sync/Mutex.h>
#include <sys/types.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

namespace qvn::host {

/// The process's GPIO port: a loop with a thread, which samples the registered lines whenever their directory changes,
/// and from time to time while the system is short of what it takes to watch or read them. A runtime directory that
/// cannot be used yet is waited for.
///
/// Members may be called from any thread, callbacks included. In a child of fork() the port of its parent cannot be
/// used; close() does nothing there.
class GpioPort {
public:
    enum Edge : int { kRising = 1, kFalling = 2, kBoth = 3 };
    using Callback = void (*)(void*);

    /// The level of a line: 0, 1, or -1 when its file is unusable.
    static int level(int line);

    bool open();
    bool watchLine(int line, int edges, Callback callback, void* context);
    void close();

private:
    struct Registration {
        int line;
        int edges;
        Callback callback;
        void* context;
        int level;     // last one seen; -1 while unknown
        bool pending;  // an edge waits for its callback
    };

    bool start() QVN_REQUIRES(mLifecycleMutex);
    bool ofParent() const;
    bool add(int line, int edges, Callback callback, void* context);
    bool closing();
    void run();
    /// Watches the lines until the port is closed. Returns before when something is missing; what that is, unless it is
    /// in the log.
    const char* serveLines();
    /// Looks for edges and calls back.
    void serve();
    /// False when a level could not be read.
    bool sample();
    void callPending();

    // Held while the thread is started and joined. The thread itself never takes it.
    sync::Mutex mLifecycleMutex;
    std::thread mThread QVN_GUARDED_BY(mLifecycleMutex);
    std::atomic<pid_t> mProcess{0};  // whose port is open

    std::optional<Timer> mNextSample;  // the thread's own

    // Never held across a callback.
    sync::Mutex mMutex;
    std::condition_variable mChanged;
    std::vector<Registration> mRegistrations QVN_GUARDED_BY(mMutex);
    bool mClosing QVN_GUARDED_BY(mMutex) = false;
    std::shared_ptr<EventLoop> mLoop QVN_GUARDED_BY(mMutex);  // null while there is none
};

}  // namespace qvn::host
