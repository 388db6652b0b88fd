#include "e2e/Process.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <utility>

extern char** environ;

namespace qvn::e2e {
namespace {

struct Pipe {
    Pipe() {
        if (pipe2(ends, O_CLOEXEC) != 0) {
            throw std::runtime_error("pipe2");
        }
    }
    int ends[2];
};

std::vector<std::string> environmentWith(const Process::Environment& changes) {
    std::vector<std::string> result;
    for (char** entry = environ; *entry; ++entry) {
        const std::string text = *entry;
        if (changes.count(text.substr(0, text.find('='))) == 0) {
            result.push_back(text);
        }
    }
    for (const auto& [name, value] : changes) {
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

Process::Process(const std::vector<std::string>& command, const Environment& environment) {
    ::signal(SIGPIPE, SIG_IGN);
    const Pipe in;
    const Pipe out;
    const Pipe err;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in.ends[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, out.ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, err.ends[1], STDERR_FILENO);
    std::vector<std::string> arguments = command;
    std::vector<std::string> variables = environmentWith(environment);
    const int failure = posix_spawn(&pid_, command.front().c_str(), &actions, nullptr, pointers(arguments).data(),
                                    pointers(variables).data());
    posix_spawn_file_actions_destroy(&actions);
    close(in.ends[0]);
    close(out.ends[1]);
    close(err.ends[1]);
    input_ = in.ends[1];
    if (failure != 0) {
        throw std::runtime_error("cannot start " + command.front());
    }
    outputReader_ = std::thread([this, fd = out.ends[0]] { collect(fd, output_); });
    errorReader_ = std::thread([this, fd = err.ends[0]] { collect(fd, errors_); });
}

Process::~Process() {
    if (!exitCode_) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    closeInput();
    outputReader_.join();
    errorReader_.join();
}

void Process::write(const std::string& text) const {
    if (::write(input_, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
        throw std::runtime_error("the program does not read its input");
    }
}

void Process::closeInput() {
    if (input_ >= 0) {
        close(std::exchange(input_, -1));
    }
}

std::string Process::output() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return output_;
}

std::string Process::errors() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return errors_;
}

bool Process::waitForOutput(const std::function<bool(const std::string&)>& condition) {
    bool satisfied = false;
    waitUntil([&] { return (satisfied = condition(output_)) || openStreams_ == 0; });
    return satisfied;
}

bool Process::waitForOutput(const std::string& text) {
    return waitForOutput([&](const std::string& output) { return output.find(text) != std::string::npos; });
}

void Process::signal(int number) const {
    kill(pid_, number);
}

std::optional<int> Process::wait() {
    // The streams close when the program ends, which makes the end of a process something to wait for.
    if (!exitCode_ && waitUntil([this] { return openStreams_ == 0; })) {
        int status = 0;
        waitpid(pid_, &status, 0);
        exitCode_ = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }
    return exitCode_;
}

void Process::collect(int fd, std::string& text) {
    char buffer[4096];
    for (ssize_t count = 0; (count = read(fd, buffer, sizeof buffer)) > 0;) {
        const std::lock_guard<std::mutex> lock(mutex_);
        text.append(buffer, static_cast<std::size_t>(count));
        changed_.notify_all();
    }
    close(fd);
    const std::lock_guard<std::mutex> lock(mutex_);
    --openStreams_;
    changed_.notify_all();
}

bool Process::waitUntil(const std::function<bool()>& condition) {
    std::unique_lock<std::mutex> lock(mutex_);
    return changed_.wait_for(lock, std::chrono::seconds(kDeadlineSeconds), condition);
}

Desk::Desk() {
    std::string name = (std::filesystem::temp_directory_path() / "qvn-e2e-XXXXXX").string();
    if (!mkdtemp(name.data())) {
        throw std::runtime_error("mkdtemp");
    }
    directory_ = name;
}

Desk::~Desk() {
    std::filesystem::remove_all(directory_);
}

std::string Desk::file(const std::string& name, const std::string& content) const {
    const std::string path = directory_ + "/" + name;
    std::ofstream(path) << content;
    return path;
}

std::unique_ptr<Process> Desk::simulator(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), QVN_SIMULATOR);
    auto process = std::make_unique<Process>(arguments, environment());
    if (!process->waitForOutput("service ")) {
        throw std::runtime_error("the simulator did not start: " + process->errors());
    }
    return process;
}

std::unique_ptr<Process> Desk::vehiclectl(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), QVN_VEHICLECTL);
    return std::make_unique<Process>(arguments, environment());
}

Desk::Result Desk::run(const std::vector<std::string>& command, Process::Environment more) const {
    more.insert({"QVN_HOST_DIR", directory_});
    Process process(command, more);
    process.closeInput();
    const std::optional<int> exitCode = process.wait();
    if (!exitCode) {
        throw std::runtime_error(command.front() + " did not end");
    }
    return {*exitCode, process.output(), process.errors()};
}

Desk::Result Desk::runVehiclectl(std::vector<std::string> arguments, const Process::Environment& more) const {
    arguments.insert(arguments.begin(), QVN_VEHICLECTL);
    return run(arguments, more);
}

Desk::Result Desk::runSimulator(const std::vector<std::string>& arguments, const Process::Environment& more) const {
    std::vector<std::string> command{QVN_SIMULATOR};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return run(command, more);
}

}  // namespace qvn::e2e
