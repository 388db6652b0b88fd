#pragma once

#include <chrono>
#include <condition_variable>
#include <string>

#include "sync/Mutex.h"

namespace qvn::testing {

/// A GPIO line that nothing else uses, by which a test sees how far the GPIO library's thread has come.
class MarkerLine {
public:
    /// The one instance; it is never destructed, since the library may call back until the process ends.
    static MarkerLine& instance();

    /// Has the line watched, in the runtime directory of now.
    void watch();
    /// Waits until the callbacks have returned for all edges of other lines that were made before.
    bool waitUntilHandled(std::chrono::steady_clock::time_point deadline);

private:
    MarkerLine() = default;
    static void onEdge(void* context);
    bool waitForEdge(std::chrono::steady_clock::time_point deadline);

    std::string mPath;
    sync::Mutex mMutex;
    std::condition_variable mChanged;
    int mMade QVN_GUARDED_BY(mMutex) = 0;  // edges; the line began at 1
    int mSeen QVN_GUARDED_BY(mMutex) = 0;
};

}  // namespace qvn::testing
