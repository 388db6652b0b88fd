#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "desk/ExitCode.h"
#include "desk/MonotonicTime.h"
#include "desk/PollUntil.h"
#include "desk/SignalNames.h"
#include "desk/Text.h"
#include "vehiclectl/BusTap.h"
#include "vehiclectl/Commands.h"
#include "vehiclectl/CommonOptions.h"
#include "vehiclectl/PropertySelection.h"
#include "vehiclectl/TraceFile.h"
#include "vehiclectl/UserErrors.h"

namespace qvn::tools {
namespace {

struct RecordOptions {
    std::string file;                     ///< "-": standard output
    std::vector<std::string> properties;  ///< names or patterns; none: all that are received
    Ends ends;                            ///< counts events
    bool force = false;                   ///< an existing file is replaced
};

constexpr std::chrono::milliseconds kProgressInterval(500);

/// A service that is there has been reached by then.
constexpr std::chrono::milliseconds kTimeToConnect(300);

/// The codes of the signals that feed the properties, and of their messages.
std::vector<std::uint32_t> codesOf(const std::vector<const PropertyInfo*>& properties) {
    std::vector<std::uint32_t> codes;
    for (const PropertyInfo* const property : properties) {
        for (const std::uint32_t code : property->received) {
            codes.push_back(code);
            if (const auto message = messageOf(code)) {
                codes.push_back(*message);
            }
        }
    }
    std::sort(codes.begin(), codes.end());
    codes.erase(std::unique(codes.begin(), codes.end()), codes.end());
    return codes;
}

std::string lineOf(const TapEvent& event, long start) {
    char time[32];
    std::snprintf(time, sizeof time, "(%.6f) ", static_cast<double>(event.at - start) / kNanosecondsPerSecond);
    std::string line = time;
    switch (event.kind) {
        case TapEvent::Kind::Signal:
            line += signalName(event.code) + "#" + hexBytes(event.raw);
            break;
        case TapEvent::Kind::MessageTimedOut:
            line += signalName(event.code) + "!timeout";
            break;
        case TapEvent::Kind::MessageOk:
            line += signalName(event.code) + "!ok";
            break;
        case TapEvent::Kind::ServiceUp:
            line += "service=up";
            break;
        case TapEvent::Kind::ServiceDown:
            line += "service=down";
            break;
        case TapEvent::Kind::ReverseEngaged:
            line += "reverse=1";
            break;
        case TapEvent::Kind::ReverseReleased:
            line += "reverse=0";
            break;
    }
    return line + "\n";
}

/// Where the trace goes: a file of its own, or standard output.
class Destination {
public:
    Destination(const RecordOptions& options, Output& output, const std::string& firstLine) : mOutput(output) {
        if (options.file != "-") {
            mFile.emplace(options.file, options.force, firstLine);
        } else {
            add(firstLine);
        }
    }

    void add(const std::string& line) {
        mBytes += line.size();
        mFile ? void(mWaiting += line) : mOutput.write(line);
    }
    /// What was added so far is in the file then.
    /// @throws std::runtime_error when the file takes no more
    void flush() {
        if (mFile) {
            mFile->append(std::exchange(mWaiting, {}));
        }
    }
    std::size_t bytes() const { return mFile ? mFile->bytes() : mBytes; }

private:
    Output& mOutput;
    std::optional<TraceFile> mFile;
    std::string mWaiting;
    std::size_t mBytes = 0;
};

/// One `record` from its start to its summary.
class Recording {
public:
    Recording(const RecordOptions& options, Output& output, long start)
        : mOptions(options),
          mOutput(output),
          mStart(start),
          mTo(options, output, "# recorded by vehiclectl; times are seconds since its start\n") {}

    void run(BusTap& tap, const StopSignals& stop) {
        const std::optional<Clock::time_point> end =
            mOptions.ends.duration ? std::optional(inSeconds(*mOptions.ends.duration)) : std::nullopt;
        const Clock::time_point connected = Clock::now() + kTimeToConnect;
        begin(tap, stop, end ? std::min(*end, connected) : connected);
        while (!complete() && (!end || Clock::now() < *end)) {
            pollfd fds[] = {{stop.fd(), POLLIN, 0}, {mOutput.fd(), POLLIN, 0}, {tap.fd(), POLLIN, 0}};
            const Clock::time_point wake = Clock::now() + kProgressInterval;
            if (pollUntil(fds, std::size(fds), end ? std::min(*end, wake) : wake) > 0 &&
                (fds[0].revents != 0 || fds[1].revents != 0)) {
                break;
            }
            write(tap.take());
            showProgress();
        }
        write(tap.take());
    }

    void printSummary() const {
        std::fprintf(stderr, "%s%ld events in %.1f s, %zu bytes%s\n", mShown ? "\r\033[K" : "", mEvents, seconds(),
                     mTo.bytes(), mCameUp ? "" : "; the CAN service was not there");
    }

private:
    bool complete() const { return mOptions.ends.count && mEvents >= *mOptions.ends.count; }
    double seconds() const { return static_cast<double>(monotonicNow() - mStart) / kNanosecondsPerSecond; }

    /// A recording begins with the state of the service: who plays it has one, and what it does not say stays.
    void begin(BusTap& tap, const StopSignals& stop, Clock::time_point end) {
        std::vector<TapEvent> events = tap.take();
        const auto isUp = [&events] {
            return std::any_of(events.begin(), events.end(),
                               [](const TapEvent& event) { return event.kind == TapEvent::Kind::ServiceUp; });
        };
        for (int ready = 1; !isUp() && ready > 0;) {
            pollfd fds[] = {{tap.fd(), POLLIN, 0}, {stop.fd(), POLLIN, 0}};
            ready = pollUntil(fds, std::size(fds), end);
            ready = fds[1].revents != 0 ? 0 : ready;
            const std::vector<TapEvent> more = tap.take();
            events.insert(events.end(), more.begin(), more.end());
        }
        if (!isUp()) {
            events.insert(events.begin(), TapEvent{mStart, TapEvent::Kind::ServiceDown, 0, {}});
        }
        write(events);
    }

    void write(const std::vector<TapEvent>& events) {
        for (const TapEvent& event : events) {
            if (complete()) {
                break;
            }
            mCameUp = mCameUp || event.kind == TapEvent::Kind::ServiceUp;
            mTo.add(lineOf(event, mStart));
            ++mEvents;
        }
        mTo.flush();
    }

    void showProgress() {
        const Clock::time_point now = Clock::now();
        if (now < mNextProgress || isatty(STDERR_FILENO) == 0 || mOptions.file == "-") {
            return;
        }
        std::fprintf(stderr, "\r%.1f s  %ld events  %zu bytes%s", seconds(), mEvents, mTo.bytes(),
                     mCameUp ? "" : "  (waiting for the CAN service)");
        mShown = true;
        mNextProgress = now + kProgressInterval;
    }

    const RecordOptions& mOptions;
    Output& mOutput;
    const long mStart;
    Destination mTo;
    Clock::time_point mNextProgress;
    long mEvents = 0;
    bool mCameUp = false;
    bool mShown = false;
};

int runRecord(const RecordOptions& options, const StopSignals& stop, Output& output) {
    const std::vector<std::uint32_t> codes = codesOf(receivedProperties(options.properties));
    if (!prepareService()) {
        return kFailed;
    }
    const long start = monotonicNow();
    BusTap tap(codes);
    Recording recording(options, output, start);
    recording.run(tap, stop);
    output.drain();
    recording.printSummary();
    return kDone;
}

}  // namespace

Run declareRecord(CommandLine& line) {
    const auto options = std::make_shared<RecordOptions>();
    line.option("FILE", options->file, "'-' is standard output");
    line.option("[PROPERTY]", options->properties, "None: all that the vehicle reports");
    addEnds(line, options->ends, "Events after which to end");
    line.flag("--force", options->force, "Replace an existing file");
    return [options](const StopSignals& stop, Output& output) { return runRecord(*options, stop, output); };
}

}  // namespace qvn::tools
