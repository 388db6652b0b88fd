#include "Measure.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mman.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace bench {
namespace {

std::int64_t readClock(clockid_t clock) {
    timespec now = {};
    clock_gettime(clock, &now);
    return now.tv_sec * 1000000000LL + now.tv_nsec;
}

const char* const kModes[] = {"paced", "load", "burst"};
const char* const kWays[] = {"callback", "handover", "thread", "inline", "beside", "blocked"};

template <std::size_t N>
bool isOneOf(const char* const (&names)[N], const std::string& name) {
    return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

[[noreturn]] void usage(const char* program) {
    std::fprintf(stderr,
                 "usage: %s paced|load|burst COUNT SHARED [--cpu N] [--sender-cpu N] [--pace MICROSECONDS] "
                 "[--way callback|handover|thread|inline|beside|blocked]\n",
                 program);
    std::exit(2);
}

}  // namespace

std::int64_t nowNs() {
    return readClock(CLOCK_MONOTONIC);
}

void pin(int processor) {
    if (processor < 0) {
        return;
    }
    cpu_set_t set;
    CPU_ZERO(&set);
    CPU_SET(static_cast<std::size_t>(processor), &set);
    if (sched_setaffinity(0, sizeof(set), &set) != 0) {
        std::perror("cannot pin to the processor");
        std::exit(1);
    }
}

Shared& mapShared(const std::string& path) {
    const int fd = open(path.c_str(), O_RDWR | O_CREAT, 0600);
    void* page = MAP_FAILED;
    if (fd >= 0 && ftruncate(fd, sizeof(Shared)) == 0) {
        page = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    }
    if (page == MAP_FAILED) {
        std::perror(path.c_str());
        std::exit(1);
    }
    close(fd);
    return *static_cast<Shared*>(page);
}

Options parseOptions(int argc, char** argv) {
    Options options;
    if (argc < 4) {
        usage(argv[0]);
    }
    options.mode = argv[1];
    options.count = static_cast<std::uint32_t>(std::strtoul(argv[2], nullptr, 10));
    options.shared = argv[3];
    for (int i = 4; i + 1 < argc; i += 2) {
        const std::string name = argv[i];
        if (name == "--cpu") {
            options.processor = std::atoi(argv[i + 1]);
        } else if (name == "--pace") {
            options.paceMicroseconds = std::atoi(argv[i + 1]);
        } else if (name == "--sender-cpu") {
            options.senderProcessor = std::atoi(argv[i + 1]);
        } else if (name == "--way") {
            options.way = argv[i + 1];
        } else {
            usage(argv[0]);
        }
    }
    if (options.count == 0 || !isOneOf(kModes, options.mode) || !isOneOf(kWays, options.way)) {
        usage(argv[0]);
    }
    return options;
}

double percentileUs(std::vector<std::int64_t> durationsNs, std::size_t percent) {
    std::sort(durationsNs.begin(), durationsNs.end());
    return static_cast<double>(durationsNs[(durationsNs.size() - 1) * percent / 100]) / 1e3;
}

long residentKibibytes() {
    long pages = 0;
    long resident = 0;
    std::ifstream("/proc/self/statm") >> pages >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

void sleepUntil(std::int64_t instantNs) {
    const timespec instant = {instantNs / 1000000000, instantNs % 1000000000};
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &instant, nullptr) != 0) {
    }
}

Receiver::Receiver(const Options& options, Shared& shared) : mOptions(options), mShared(shared) {
    if (mOptions.mode == "paced") {
        mLatencies.reserve(mOptions.count);
    }
}

bool Receiver::arrived() {
    if (mCount == 0) {
        mResidentAtFirst = residentKibibytes();
        mFirstNs = nowNs();
        mCpuAtFirstNs = readClock(CLOCK_PROCESS_CPUTIME_ID);
    }
    if (mOptions.mode == "paced") {
        mLatencies.push_back(nowNs() - mShared.sentNs.load(std::memory_order_relaxed));
    }
    ++mCount;
    if (mCount != mOptions.count) {
        return false;
    }
    mLastNs = nowNs();
    mCpuAtLastNs = readClock(CLOCK_PROCESS_CPUTIME_ID);
    mResidentAtLast = residentKibibytes();
    mShared.received = mCount;
    return true;
}

void Receiver::print(const char* program) const {
    const auto cpu = static_cast<double>(mCpuAtLastNs - mCpuAtFirstNs);
    std::printf(
        "{\"program\": \"%s\", \"mode\": \"%s\", \"count\": %u, \"cpu_ns_per_value\": %.0f, "
        "\"cpu_percent\": %.2f, \"resident_growth_kib\": %ld",
        program, mOptions.mode.c_str(), mCount, cpu / mOptions.count,
        100.0 * cpu / static_cast<double>(mLastNs - mFirstNs), mResidentAtLast - mResidentAtFirst);
    if (mOptions.mode == "paced") {
        std::printf(", \"p50_us\": %.2f, \"p99_us\": %.2f}\n", percentileUs(mLatencies, 50),
                    percentileUs(mLatencies, 99));
    } else {
        const double seconds = static_cast<double>(mLastNs - mShared.startedNs) / 1e9;
        std::printf(", \"values_per_second\": %.0f}\n", mCount / seconds);
    }
    std::fflush(stdout);
}

}  // namespace bench
