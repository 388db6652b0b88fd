#pragma once

#include <chrono>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "desk/StopSignals.h"

namespace qvn::tools {

/// Standard output that its reader cannot hold up. A thread of its own writes; what waits for a reader that has stopped
/// is bounded, and the oldest of it gives way to the newest. All members are called from one thread.
class Output {
public:
    /// Made after the stop signals, whose thread mask the writer inherits.
    explicit Output(const StopSignals& stop);
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    /// Writes a text, usually one line: it is shown or left out as a whole.
    void write(std::string text);
    /// The same, formatted as by printf.
    void print(const char* format, ...) __attribute__((format(printf, 2, 3)));

    /// Whether everything has been written.
    bool idle() const;
    /// Whether nothing can be written any more: the reader has gone, or an error. fd() is readable from then on.
    bool gone() const;
    int fd() const;

    /// The tool has been told to end by now: a reader that has stopped is no longer waited for, but for a moment.
    void hurry() { hurried_ = true; }
    /// Waits until everything has been written or nothing can be; a stop signal hurries it.
    void drain();
    /// Drains, and ends. What went wrong is one sentence for the user; empty when nothing did.
    /// @return whether the output could be written; a reader that has gone or has stopped is no failure
    bool finish(std::string* complaint);

private:
    class Writer;

    const StopSignals& stop_;
    std::shared_ptr<Writer> writer_;  // shared with the thread, which may be stuck in a write to the end
    std::thread thread_;
    bool hurried_ = false;
    std::optional<std::chrono::steady_clock::time_point> giveUp_;  // once it is in a hurry
};

}  // namespace qvn::tools
