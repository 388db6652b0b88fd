#pragma once

#include <sys/types.h>

#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace qvn::e2e {

/// How long anything may take before a test gives up on it.
constexpr int kDeadlineSeconds = 30;

/// A program that runs, with what it has written so far. When it goes out of scope it is killed, and with it every
/// process that it has started. No call here waits longer than kDeadlineSeconds.
class Process {
public:
    using Environment = std::map<std::string, std::string>;

    /// Runs a command line of the shell. The tools of this build go by their names, and see no other QVN_ variables
    /// than those that are given here.
    Process(const std::string& command, const Environment& variables);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    pid_t pid() const { return mPid; }

    /// Writes to its standard input.
    void write(const std::string& text) const;
    void closeInput();

    std::string output() const;
    std::string errors() const;

    /// Waits until its standard output satisfies the condition. False when it does not, or the program has ended.
    bool waitForOutput(const std::function<bool(const std::string&)>& condition);
    bool waitForOutput(const std::string& text);

    void signal(int number) const;
    /// Waits for its end: the exit code, or minus the number of the signal that ended it. Nothing when it goes on.
    std::optional<int> wait();

    /// The most memory that it has had so far, and what it has now.
    long peakKibibytes() const { return memory("VmHWM:"); }
    long kibibytes() const { return memory("VmRSS:"); }

private:
    long memory(const std::string& field) const;
    void collect(int output, int errors, int end);
    void take(int& fd, std::string& text);
    bool waitUntil(const std::function<bool()>& condition);

    pid_t mPid = -1;
    int mInput = -1;
    mutable std::mutex mMutex;
    std::condition_variable mChanged;
    std::string mOutput;
    std::string mErrors;
    std::optional<int> mExitCode;
    std::thread mCollector;
};

}  // namespace qvn::e2e
