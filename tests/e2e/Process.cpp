#include "e2e/Process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <utility>
#include <vector>

extern char** environ;

namespace qvn::e2e {
namespace {

int checked(int result, const char* what) {
    if (result < 0) {
        throw std::runtime_error(what);
    }
    return result;
}

struct Pipe {
    Pipe() { checked(pipe2(ends, O_CLOEXEC), "pipe2"); }
    int ends[2];
};

std::vector<std::string> environmentWith(Process::Environment variables) {
    variables["PATH"] = std::string(QVN_BIN_DIR) + ":" + std::getenv("PATH");
    std::vector<std::string> result;
    for (char** entry = environ; *entry; ++entry) {
        const std::string text = *entry;
        if (text.rfind("QVN_", 0) != 0 && text.rfind("PATH=", 0) != 0) {
            result.push_back(text);
        }
    }
    for (const auto& [name, value] : variables) {
        result.push_back(name + "=" + value);
    }
    return result;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (std::string& text : texts) {
        result.push_back(text.data());
    }
    result.push_back(nullptr);
    return result;
}

}  // namespace

Process::Process(const std::string& command, const Environment& variables) {
    ::signal(SIGPIPE, SIG_IGN);
    const Pipe in;
    const Pipe out;
    const Pipe err;
    const int streams[] = {in.ends[0], out.ends[1], err.ends[1]};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (int fd = 0; fd < 3; ++fd) {
        posix_spawn_file_actions_adddup2(&actions, streams[fd], fd);
    }
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
    std::vector<std::string> arguments{"sh", "-c", command};
    std::vector<std::string> environment = environmentWith(variables);
    posix_spawn(&mPid, "/bin/sh", &actions, &attributes, pointers(arguments).data(), pointers(environment).data());
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    for (const int ofTheChild : streams) {
        close(ofTheChild);
    }
    mInput = in.ends[1];
    for (const int ours : {mInput, out.ends[0], err.ends[0]}) {
        fcntl(ours, F_SETFL, O_NONBLOCK);
    }
    const int end = checked(static_cast<int>(syscall(SYS_pidfd_open, mPid, 0)), "cannot start a program");
    mCollector = std::thread([=] { collect(out.ends[0], err.ends[0], end); });
}

Process::~Process() {
    kill(-mPid, SIGKILL);
    mCollector.join();
    waitpid(mPid, nullptr, 0);
    closeInput();
}

void Process::write(const std::string& text) const {
    for (std::size_t done = 0; done < text.size();) {
        pollfd writable{mInput, POLLOUT, 0};
        const int ready = poll(&writable, 1, kDeadlineSeconds * 1000);
        const ssize_t count = ready > 0 ? ::write(mInput, text.data() + done, text.size() - done) : -1;
        done += static_cast<std::size_t>(checked(static_cast<int>(count), "the program does not read its input"));
    }
}

void Process::closeInput() {
    if (mInput >= 0) {
        close(std::exchange(mInput, -1));
    }
}

std::string Process::output() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mOutput;
}

std::string Process::errors() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mErrors;
}

bool Process::waitForOutput(const std::function<bool(const std::string&)>& condition) {
    bool satisfied = false;
    waitUntil([&] { return (satisfied = condition(mOutput)) || mExitCode; });
    return satisfied;
}

bool Process::waitForOutput(const std::string& text) {
    return waitForOutput([&](const std::string& output) { return output.find(text) != std::string::npos; });
}

void Process::signal(int number) const {
    kill(mPid, number);
}

std::optional<int> Process::wait() {
    return waitUntil([this] { return mExitCode.has_value(); }) ? mExitCode : std::nullopt;
}

long Process::memory(const std::string& field) const {
    std::ifstream status("/proc/" + std::to_string(mPid) + "/status");
    long kibibytes = 0;
    for (std::string word; status >> word;) {
        if (word == field) {
            status >> kibibytes;
        }
    }
    return kibibytes;
}

/// The thread: takes what the program writes until the program ends, whoever else has its streams open then. The
/// process is left to be waited for, so that its number stays its own until it is killed with its children.
void Process::collect(int output, int errors, int end) {
    pollfd fds[] = {{end, POLLIN, 0}, {output, POLLIN, 0}, {errors, POLLIN, 0}};
    while (fds[0].revents == 0) {
        poll(fds, 3, -1);
        take(fds[1].fd, mOutput);
        take(fds[2].fd, mErrors);
    }
    for (const pollfd& descriptor : fds) {
        close(descriptor.fd);
    }
    siginfo_t how{};
    waitid(P_PID, static_cast<id_t>(mPid), &how, WEXITED | WNOWAIT);
    const std::lock_guard<std::mutex> lock(mMutex);
    mExitCode = how.si_code == CLD_EXITED ? how.si_status : -how.si_status;
    mChanged.notify_all();
}

/// Takes what is there; closes the stream at its end.
void Process::take(int& fd, std::string& text) {
    char buffer[4096];
    ssize_t count = 0;
    while (fd >= 0 && (count = read(fd, buffer, sizeof buffer)) > 0) {
        const std::lock_guard<std::mutex> lock(mMutex);
        text.append(buffer, static_cast<std::size_t>(count));
        mChanged.notify_all();
    }
    if (fd >= 0 && (count == 0 || errno != EAGAIN)) {
        close(std::exchange(fd, -1));
    }
}

bool Process::waitUntil(const std::function<bool()>& condition) {
    std::unique_lock<std::mutex> lock(mMutex);
    return mChanged.wait_for(lock, std::chrono::seconds(kDeadlineSeconds), condition);
}

}  // namespace qvn::e2e
