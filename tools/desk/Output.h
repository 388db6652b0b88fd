#pragma once

#include <chrono>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "desk/StopSignals.h"

namespace qvn::tools {

/// Standard output for a reader that may stop reading: the tool goes on. A thread of its own writes. What waits for the
/// reader is limited; when there is more, the oldest is left out. All members are called from one thread.
class Output {
public:
    /// Made after the stop signals, so that they are blocked in the thread that writes, too.
    explicit Output(const StopSignals& stop);
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    /// Writes whole lines, usually one: they are shown or left out together.
    void write(std::string text);
    /// The same, formatted as by printf.
    void print(const char* format, ...) __attribute__((format(printf, 2, 3)));

    /// Whether everything has been written.
    bool idle() const;
    /// Whether nothing can be written any more: the reader has gone, or an error. fd() is readable from then on.
    bool gone() const;
    int fd() const;

    /// The tool is to end now: from here on drain() waits for a reader that has stopped for a moment only.
    void hurry() { mHurried = true; }
    /// Waits until everything has been written or nothing can be written any more. A stop signal counts as hurry().
    void drain();
    /// Drains, and ends. What went wrong is one sentence for the user; empty when nothing did.
    /// @return whether the output could be written; a reader that has gone or has stopped is no failure
    bool finish(std::string* complaint);

private:
    class Writer;

    const StopSignals& mStop;
    std::shared_ptr<Writer> mWriter;  // shared with the thread, which may hang in a write until the process ends
    std::thread mThread;
    bool mHurried = false;
    std::optional<std::chrono::steady_clock::time_point> mGiveUp;  // once it is in a hurry
};

}  // namespace qvn::tools
