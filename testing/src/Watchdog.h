#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace qvn::testing {

/// Writes to standard error what hangs, shortly before the time that ctest gives a test is over: $QVN_TEST_TIMEOUT
/// seconds, which qvn_add_vehicle_test() sets. Without it, or in time, it does nothing.
class Watchdog {
public:
    /// @param whatHangs is asked on a thread of the watchdog's own
    explicit Watchdog(std::function<std::string()> whatHangs);
    ~Watchdog();
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

private:
    void watch(int seconds);

    const std::function<std::string()> mWhatHangs;
    std::mutex mMutex;
    std::condition_variable mChanged;
    bool mEnded = false;
    std::thread mThread;
};

}  // namespace qvn::testing
