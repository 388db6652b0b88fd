#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>

#include "desk/BadInput.h"
#include "desk/ExitCode.h"
#include "desk/MonotonicTime.h"
#include "desk/PollUntil.h"
#include "desk/SignalNames.h"
#include "desk/Text.h"
#include "vehiclectl/BusTap.h"
#include "vehiclectl/Commands.h"
#include "vehiclectl/Waiting.h"

namespace qvn::tools {
namespace {

constexpr std::chrono::milliseconds kProgressInterval(500);

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
    Destination(const RecordOptions& options, Output& output) : name_(options.file), output_(output) {
        if (name_ == "-") {
            return;
        }
        // "x": the file must not be there yet, whoever made it.
        file_.reset(std::fopen(name_.c_str(), options.force ? "we" : "wxe"));
        if (!file_) {
            throw BadInput(errno == EEXIST ? name_ + " is there already; --force replaces it"
                                           : "cannot write " + name_ + ": " + std::strerror(errno));
        }
    }

    /// @throws std::runtime_error when the file takes no more
    void write(const std::string& line) {
        bytes_ += line.size();
        if (!file_) {
            output_.write(line);
        } else if (std::fwrite(line.data(), 1, line.size(), file_.get()) != line.size()) {
            fail();
        }
    }
    /// What was written so far is in the file then, in whole lines.
    void flush() {
        if (file_ && std::fflush(file_.get()) != 0) {
            fail();
        }
    }
    std::size_t bytes() const { return bytes_; }

private:
    struct Closer {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    [[noreturn]] void fail() const {
        throw std::runtime_error("cannot write " + name_ + ": " + std::strerror(errno) + "; it ends before this");
    }

    const std::string name_;
    Output& output_;
    std::unique_ptr<std::FILE, Closer> file_;
    std::size_t bytes_ = 0;
};

/// One `record` from its start to its summary.
class Recording {
public:
    Recording(const RecordOptions& options, Output& output)
        : options_(options), output_(output), to_(options, output) {}

    void run(BusTap& tap, const StopSignals& stop) {
        to_.write("# recorded by vehiclectl; times are seconds since its start\n");
        const std::optional<Clock::time_point> end =
            options_.duration ? std::optional(inSeconds(*options_.duration)) : std::nullopt;
        while (!complete() && (!end || Clock::now() < *end)) {
            pollfd fds[] = {{stop.fd(), POLLIN, 0}, {output_.fd(), POLLIN, 0}, {tap.fd(), POLLIN, 0}};
            const Clock::time_point wake = Clock::now() + kProgressInterval;
            if (pollUntil(fds, std::size(fds), end ? std::min(*end, wake) : wake) > 0 &&
                (fds[0].revents != 0 || fds[1].revents != 0)) {
                break;
            }
            write(tap.take());
            showProgress();
        }
        write(tap.take());
        to_.flush();
    }

    void printSummary() const {
        std::fprintf(stderr, "%s%ld events in %.1f s, %zu bytes%s\n", shown_ ? "\r\033[K" : "", events_, seconds(),
                     to_.bytes(), cameUp_ ? "" : "; the CAN service was not there");
    }

private:
    bool complete() const { return options_.count && events_ >= *options_.count; }
    double seconds() const { return static_cast<double>(monotonicNow() - start_) / kNanosecondsPerSecond; }

    void write(const std::vector<TapEvent>& events) {
        for (const TapEvent& event : events) {
            if (complete()) {
                return;
            }
            cameUp_ = cameUp_ || event.kind == TapEvent::Kind::ServiceUp;
            to_.write(lineOf(event, start_));
            ++events_;
        }
    }

    void showProgress() {
        const Clock::time_point now = Clock::now();
        if (now < nextProgress_ || isatty(STDERR_FILENO) == 0 || options_.file == "-") {
            return;
        }
        to_.flush();
        std::fprintf(stderr, "\r%.1f s  %ld events  %zu bytes%s", seconds(), events_, to_.bytes(),
                     cameUp_ ? "" : "  (waiting for the CAN service)");
        shown_ = true;
        nextProgress_ = now + kProgressInterval;
    }

    const RecordOptions& options_;
    Output& output_;
    const long start_ = monotonicNow();
    Destination to_;
    Clock::time_point nextProgress_;
    long events_ = 0;
    bool cameUp_ = false;
    bool shown_ = false;
};

}  // namespace

int recordCommand(const RecordOptions& options, const StopSignals& stop, Output& output) {
    const std::vector<std::uint32_t> codes = codesOf(receivedProperties(options.properties));
    Recording recording(options, output);
    if (!prepareService()) {
        return kFailed;
    }
    BusTap tap(codes);
    recording.run(tap, stop);
    output.drain();
    recording.printSummary();
    return kDone;
}

}  // namespace qvn::tools
