#ifndef SYNC_MUTEX_H
#define SYNC_MUTEX_H

#include <mutex>

// Who guards what, in a form that clang checks (-Wthread-safety); other compilers see nothing of it.
#if defined(__clang__)
#define QVN_THREAD_ATTRIBUTE(...) __attribute__((__VA_ARGS__))
#else
#define QVN_THREAD_ATTRIBUTE(...)
#endif

/// Of a variable: it is touched only while the mutex is held.
#define QVN_GUARDED_BY(mutex) QVN_THREAD_ATTRIBUTE(guarded_by(mutex))
/// Of a function or lambda: its caller holds the mutex.
#define QVN_REQUIRES(...) QVN_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
/// Of a function: it takes, or gives back, the mutex; without an argument that of the object itself.
#define QVN_ACQUIRE(...) QVN_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define QVN_RELEASE(...) QVN_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
/// Of a class whose objects hold a mutex from their construction to their destruction.
#define QVN_SCOPED_LOCK QVN_THREAD_ATTRIBUTE(scoped_lockable)
/// Of a function that keeps the rules in a way that the analysis cannot follow.
#define QVN_UNCHECKED_LOCKING QVN_THREAD_ATTRIBUTE(no_thread_safety_analysis)

namespace qvn {
namespace sync {

/// A std::mutex that the analysis knows.
class QVN_THREAD_ATTRIBUTE(capability("mutex")) Mutex {
public:
    void lock() QVN_ACQUIRE() { mMutex.lock(); }
    void unlock() QVN_RELEASE() { mMutex.unlock(); }

private:
    friend class MutexLock;

    std::mutex mMutex;
};

/// Holds a mutex for a scope.
class QVN_SCOPED_LOCK MutexLock {
public:
    explicit MutexLock(Mutex& mutex) QVN_ACQUIRE(mutex) : mLock(mutex.mMutex) {}
    ~MutexLock() QVN_RELEASE() {}
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

    void unlock() QVN_RELEASE() { mLock.unlock(); }
    /// What a std::condition_variable waits with; the mutex is held again when the wait is over.
    std::unique_lock<std::mutex>& native() { return mLock; }

private:
    std::unique_lock<std::mutex> mLock;
};

}  // namespace sync
}  // namespace qvn

#endif  // SYNC_MUTEX_H
