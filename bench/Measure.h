#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// What the programs of the two-process measurement share.
namespace bench {

std::int64_t nowNs();
/// Binds the process to one processor; negative leaves it alone.
void pin(int processor);

/// A page of memory that sender and receiver map from the same file, so that the measurement adds nothing to what is
/// sent: the receiver looks up when the value that it sees was sent.
struct Shared {
    std::atomic<std::int64_t> sentNs;     ///< when the newest value was handed to the sender's bus
    std::atomic<std::int64_t> startedNs;  ///< when the first value of a burst was
    std::atomic<std::uint32_t> received;
    std::atomic<bool> ready;  ///< the receiver is subscribed
};
Shared& mapShared(const std::string& path);

struct Options {
    std::string shared;  ///< file of the Shared page
    std::string mode;    ///< "paced", "load" or "burst"
    std::uint32_t count = 0;
    int processor = -1;
    int senderProcessor = -1;  ///< the yardstick's other process
    int paceMicroseconds = 500;
    std::string way = "callback";  ///< how the application receives, see there
};
/// From the command line: MODE COUNT SHARED [--cpu N] [--sender-cpu N] [--pace MICROSECONDS] [--way WAY];
/// exits with a usage text.
Options parseOptions(int argc, char** argv);

/// A percentile, in microseconds, of durations in nanoseconds.
double percentileUs(std::vector<std::int64_t> durationsNs, std::size_t percent);

/// The memory of this process that is in use.
long residentKibibytes();

/// Waits until `instant` on the monotonic clock.
void sleepUntil(std::int64_t instantNs);

/// Collects what the receiver sees, and prints one JSON object when the last value is in.
class Receiver {
public:
    Receiver(const Options& options, Shared& shared);
    /// One value has arrived. True when it was the last one.
    bool arrived();
    void print(const char* program) const;

private:
    const Options mOptions;
    Shared& mShared;
    std::vector<std::int64_t> mLatencies;
    std::uint32_t mCount = 0;
    std::int64_t mFirstNs = 0;
    std::int64_t mLastNs = 0;
    std::int64_t mCpuAtFirstNs = 0;
    std::int64_t mCpuAtLastNs = 0;
    long mResidentAtFirst = 0;
    long mResidentAtLast = 0;
};

}  // namespace bench
