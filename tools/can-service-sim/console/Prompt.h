#pragma once

#include <sys/types.h>
#include <termios.h>

#include <functional>
#include <string>

#include "can-service-sim/console/Completion.h"

namespace qvn::tools {

/// A prompt for a process whose standard input and output are a terminal. A child process has the terminal; this one
/// goes on as if it were run by a script: it reads the entered lines from standard input, and what it writes to
/// standard output, or to standard error if that is a terminal, appears above the prompt. So nothing that happens at
/// the terminal holds this process up or reaches its memory. What a terminal that stands still does not take of
/// standard error is lost.
class Prompt {
public:
    Prompt() = default;
    /// Waits a moment for the terminal to show everything, and leaves it as it was found.
    ~Prompt() { end(); }
    Prompt(const Prompt&) = delete;
    Prompt& operator=(const Prompt&) = delete;

    /// Starts it; before any thread that locks something, since the child is a copy. Without a terminal it does
    /// nothing.
    /// @param complete completes a line, in the child
    void start(const std::function<Completion(const std::string& line)>& complete);
    bool isRunning() const { return mChild > 0; }

    /// The same as the destructor.
    void end();

private:
    void awaitChild() const;

    pid_t mChild = -1;
    int mTerminal = -1;
    bool mTakesErrors = false;
    termios mFound{};
};

}  // namespace qvn::tools
