#pragma once

#include <sys/types.h>

#include <atomic>
#include <thread>
#include <vector>

#include "host/DirectoryWatch.h"
#include "sync/Mutex.h"

namespace qvn {
namespace host {

/**
 * The process's GPIO port: a thread that samples the registered lines whenever their directory changes, and from time
 * to time while the system is short of what it takes to watch or read them.
 *
 * Members may be called from any thread, callbacks included. In a child of fork() the port of its parent cannot be
 * used; close() does nothing there.
 */
class GpioPort {
public:
    enum Edge : int { kRising = 1, kFalling = 2, kBoth = 3 };
    using Callback = void (*)(void*);

    /** The level of a line: 0, 1, or -1 when its file is unusable. */
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

    bool start() QVN_REQUIRES(lifecycleMutex_);
    bool ofParent() const;
    bool add(int line, int edges, Callback callback, void* context);
    void run();
    /// Opens what is not open yet. False when the system is short of something; errno tells of what.
    bool openSources();
    int takeWakeUps();
    void wake() QVN_REQUIRES(mutex_);
    /// Looks for edges. False when a level could not be read.
    bool sample();
    void callPending();
    bool closing();

    // Held while the thread is started and joined. The thread itself never takes it.
    sync::Mutex lifecycleMutex_;
    std::thread thread_ QVN_GUARDED_BY(lifecycleMutex_);
    std::atomic<pid_t> process_{0};  // whose port is open

    DirectoryWatch watch_;  // the thread's own

    // Never held across a callback.
    sync::Mutex mutex_;
    std::vector<Registration> registrations_ QVN_GUARDED_BY(mutex_);
    bool closing_ QVN_GUARDED_BY(mutex_) = false;
    int wakeFd_ QVN_GUARDED_BY(mutex_) = -1;  // an eventfd; -1 while there is none
};

}  // namespace host
}  // namespace qvn
