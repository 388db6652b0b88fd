#pragma once

#include <thread>
#include <vector>

#include "host/DirectoryWatch.h"
#include "sync/Mutex.h"

namespace qvn {
namespace host {

/**
 * The process's GPIO port: a thread that samples the registered lines whenever their directory changes.
 *
 * Members may be called from any thread, callbacks included.
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
    void release() QVN_REQUIRES(lifecycleMutex_);
    bool add(int line, int edges, Callback callback, void* context);
    void run();
    /// Looks for edges. False when a level could not be read.
    bool sample();
    void callPending();
    bool closing();

    // Held while the thread is started and joined. The thread itself never takes it.
    sync::Mutex lifecycleMutex_;
    std::thread thread_ QVN_GUARDED_BY(lifecycleMutex_);
    // Changed only while there is no thread; the thread itself reads them without a lock.
    DirectoryWatch watch_;
    int wakeFd_ = -1;

    // Never held across a callback.
    sync::Mutex mutex_;
    std::vector<Registration> registrations_ QVN_GUARDED_BY(mutex_);
    bool closing_ QVN_GUARDED_BY(mutex_) = false;
};

}  // namespace host
}  // namespace qvn
