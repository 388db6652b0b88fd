#include "can-service-sim/console/Prompt.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <system_error>
#include <utility>

#include "can-service-sim/console/LineEditor.h"
#include "desk/PollUntil.h"

namespace qvn::tools {
namespace {

constexpr std::chrono::seconds kPatience(1);

struct Pipe {
    Pipe() {
        if (pipe2(ends, O_CLOEXEC) != 0) {
            throw std::system_error(errno, std::generic_category(), "pipe2");
        }
    }
    int out() const { return ends[0]; }
    int in() const { return ends[1]; }

    int ends[2] = {-1, -1};
};

[[noreturn]] void edit(const LineEditor::Pipes& pipes, const std::function<Completion(const std::string&)>& complete) {
    {
        const pid_t service = getppid();
        LineEditor editor(pipes, complete, [service] { kill(service, SIGSTOP); });
        editor.run();
    }
    _exit(0);
}

}  // namespace

void Prompt::start(const std::function<Completion(const std::string&)>& complete) {
    if (isatty(STDIN_FILENO) == 0 || isatty(STDOUT_FILENO) == 0) {
        return;
    }
    const Pipe lines;
    const Pipe texts;
    const Pipe errors;
    tcgetattr(STDIN_FILENO, &mFound);
    mChild = fork();
    if (mChild < 0) {
        throw std::system_error(errno, std::generic_category(), "fork");
    }
    if (mChild == 0) {
        for (const int ofTheService : {lines.out(), texts.in(), errors.in()}) {
            close(ofTheService);
        }
        edit({texts.out(), errors.out(), lines.in()}, complete);
    }
    mTerminal = fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    dup2(lines.out(), STDIN_FILENO);
    dup2(texts.in(), STDOUT_FILENO);
    mTakesErrors = isatty(STDERR_FILENO) != 0;
    if (mTakesErrors) {
        fcntl(errors.in(), F_SETFL, O_NONBLOCK);
        dup2(errors.in(), STDERR_FILENO);
    }
    for (const Pipe* const pipe : {&lines, &texts, &errors}) {
        close(pipe->out());
        close(pipe->in());
    }
    std::signal(SIGTSTP, SIG_IGN);  // the child stops this process once the terminal is in order
}

void Prompt::end() {
    if (mChild <= 0) {
        return;
    }
    // The texts are at their end with this: the child has shown all of them when it ends.
    dup2(mTerminal, STDOUT_FILENO);
    if (mTakesErrors) {
        dup2(mTerminal, STDERR_FILENO);
    }
    awaitChild();
    kill(mChild, SIGKILL);
    waitpid(std::exchange(mChild, -1), nullptr, 0);
    if (tcgetpgrp(mTerminal) == getpgrp()) {
        tcsetattr(mTerminal, TCSANOW, &mFound);
    }
    close(std::exchange(mTerminal, -1));
}

/// Until it has closed its end of the lines, as long as it may take.
void Prompt::awaitChild() const {
    const Clock::time_point end = Clock::now() + kPatience;
    for (ssize_t count = 1; count > 0;) {
        pollfd lines{STDIN_FILENO, POLLIN, 0};
        char ignored[4096];
        count = pollUntil(&lines, 1, end) > 0 ? ::read(STDIN_FILENO, ignored, sizeof ignored) : 0;
    }
}

}  // namespace qvn::tools
