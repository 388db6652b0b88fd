#pragma once

#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/resource.h>
#include <time.h>
#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <thread>

namespace qvn::test {

inline std::size_t openDescriptors() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

/// The memory that the process has, when what it has freed is given back.
inline long residentKibibytes() {
    malloc_trim(0);
    std::ifstream pages("/proc/self/statm");
    long all = 0, resident = 0;
    pages >> all >> resident;
    return resident * ::sysconf(_SC_PAGESIZE) / 1024;
}

/// While it lives, the process gets no descriptor beyond those that it has.
class NoMoreDescriptors {
public:
    explicit NoMoreDescriptors(rlim_t numbersBelow = 3) {
        getrlimit(RLIMIT_NOFILE, &mUsual);
        const rlimit limit{numbersBelow, mUsual.rlim_max};
        setrlimit(RLIMIT_NOFILE, &limit);
    }
    ~NoMoreDescriptors() { setrlimit(RLIMIT_NOFILE, &mUsual); }
    NoMoreDescriptors(const NoMoreDescriptors&) = delete;
    NoMoreDescriptors& operator=(const NoMoreDescriptors&) = delete;

private:
    rlimit mUsual{};
};

/// Whether the process's threads wait rather than work: for the time of some retries they use little of a processor.
inline bool isIdle() {
    const auto cpuTime = [] {
        timespec used{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
        return std::chrono::seconds(used.tv_sec) + std::chrono::nanoseconds(used.tv_nsec);
    };
    constexpr std::chrono::milliseconds kWindow(400);
    const auto before = cpuTime();
    std::this_thread::sleep_for(kWindow);
    return cpuTime() - before < kWindow / 8;
}

/// What the action writes to stderr.
inline std::string logOf(const std::function<void()>& action) {
    testing::internal::CaptureStderr();
    action();
    return testing::internal::GetCapturedStderr();
}

inline std::size_t count(const std::string& text, const std::string& part) {
    std::size_t found = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) {
        ++found;
    }
    return found;
}

}  // namespace qvn::test
