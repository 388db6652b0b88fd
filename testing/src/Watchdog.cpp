#include "Watchdog.h"

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <utility>

namespace qvn::testing {

Watchdog::Watchdog(std::function<std::string()> whatHangs) : mWhatHangs(std::move(whatHangs)) {
    const char* const text = std::getenv("QVN_TEST_TIMEOUT");
    if (const int seconds = text != nullptr ? std::atoi(text) : 0; seconds > 0) {
        mThread = std::thread(&Watchdog::watch, this, seconds);
    }
}

Watchdog::~Watchdog() {
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mEnded = true;
        mChanged.notify_all();
    }
    if (mThread.joinable()) {
        mThread.join();
    }
}

void Watchdog::watch(int seconds) {
    const auto most = std::chrono::milliseconds(std::chrono::seconds(seconds)) * 8 / 10;  // the rest is for saying it
    std::unique_lock<std::mutex> lock(mMutex);
    if (!mChanged.wait_for(lock, most, [this] { return mEnded; })) {
        std::cerr << "TestVehicle: the test has not ended after " << static_cast<double>(most.count()) / 1000 << " s; "
                  << mWhatHangs() << std::endl;
    }
}

}  // namespace qvn::testing
