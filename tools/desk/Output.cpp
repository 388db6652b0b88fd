#include "desk/Output.h"

#include <limits.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "desk/PollUntil.h"
#include "desk/WakeUp.h"
#include "desk/WholeLines.h"
#include "sync/Mutex.h"

namespace qvn::tools {
namespace {

constexpr std::size_t kMostWaiting = std::size_t{256} * 1024;  // bytes; a pipe of the system holds 64 KiB more
constexpr std::chrono::milliseconds kHurriedWait(500);

}  // namespace

class Output::Writer {
public:
    void add(std::string text);
    void close();
    /// The thread: writes until it is closed or nothing can be written.
    void run();

    bool idle();
    /// 0 while the output is in order.
    int error();
    /// How many texts the reader has not got and will not get.
    long leftOut();

    WakeUp settled;  ///< readable when it may be idle or have failed
    WakeUp failed;   ///< readable once it has failed

private:
    std::string next();
    bool awaitText();
    void fail(int error);

    WakeUp added_;
    sync::Mutex mutex_;
    std::deque<std::string> waiting_ QVN_GUARDED_BY(mutex_);
    std::size_t bytes_ QVN_GUARDED_BY(mutex_) = 0;
    long inHand_ QVN_GUARDED_BY(mutex_) = 0;  // texts that the thread is writing
    long dropped_ QVN_GUARDED_BY(mutex_) = 0;
    int error_ QVN_GUARDED_BY(mutex_) = 0;
    bool closed_ QVN_GUARDED_BY(mutex_) = false;
};

void Output::Writer::add(std::string text) {
    const sync::MutexLock lock(mutex_);
    if (error_ != 0 || text.empty()) {
        return;
    }
    bytes_ += text.size();
    waiting_.push_back(std::move(text));
    for (; bytes_ > kMostWaiting && waiting_.size() > 1; ++dropped_) {
        bytes_ -= waiting_.front().size();
        waiting_.pop_front();
    }
    added_.notify();
}

void Output::Writer::close() {
    const sync::MutexLock lock(mutex_);
    closed_ = true;
    added_.notify();
}

bool Output::Writer::idle() {
    const sync::MutexLock lock(mutex_);
    return waiting_.empty() && inHand_ == 0;
}

int Output::Writer::error() {
    const sync::MutexLock lock(mutex_);
    return error_;
}

long Output::Writer::leftOut() {
    const sync::MutexLock lock(mutex_);
    return dropped_ + inHand_ + static_cast<long>(waiting_.size());
}

void Output::Writer::run() {
    for (std::string text = next(); !text.empty(); text = next()) {
        if (const int error = writeWholeLines(STDOUT_FILENO, text)) {
            fail(error);
            return;
        }
    }
}

/// What to write next; waits for it. Nothing at the end.
std::string Output::Writer::next() {
    do {
        const sync::MutexLock lock(mutex_);
        std::string text;
        inHand_ = 0;
        // No more than a pipe takes at once: it is counted as a whole when the reader does not get it.
        while (!closed_ && !waiting_.empty() && (text.empty() || text.size() + waiting_.front().size() <= PIPE_BUF)) {
            bytes_ -= waiting_.front().size();
            text += waiting_.front();
            waiting_.pop_front();
            ++inHand_;
        }
        if (closed_ || !text.empty()) {
            return text;
        }
        settled.notify();
    } while (awaitText());
    return {};
}

/// False when the reader goes away instead.
bool Output::Writer::awaitText() {
    pollfd fds[] = {{STDOUT_FILENO, 0, 0}, {added_.fd(), POLLIN, 0}};
    poll(fds, 2, -1);
    if (fds[0].revents != 0) {
        fail((fds[0].revents & POLLNVAL) != 0 ? EBADF : EPIPE);
        return false;
    }
    added_.clear();
    return true;
}

void Output::Writer::fail(int error) {
    const sync::MutexLock lock(mutex_);
    error_ = error;
    waiting_.clear();
    settled.notify();
    failed.notify();
}

Output::Output(const StopSignals& stop)
    : stop_(stop), writer_(std::make_shared<Writer>()), thread_([writer = writer_] { writer->run(); }) {}

Output::~Output() {
    writer_->close();
    // A thread that hangs in a write ends with the process.
    if (idle() || gone()) {
        thread_.join();
    } else {
        thread_.detach();
    }
}

void Output::write(std::string text) {
    writer_->add(std::move(text));
}

void Output::print(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    char* text = nullptr;
    const int size = vasprintf(&text, format, arguments);
    va_end(arguments);
    if (size >= 0) {
        write(std::string(text, static_cast<std::size_t>(size)));
        std::free(text);
    }
}

bool Output::idle() const {
    return writer_->idle();
}

bool Output::gone() const {
    return writer_->error() != 0;
}

int Output::fd() const {
    return writer_->failed.fd();
}

void Output::drain() {
    while (!hurried_ && !idle() && !gone()) {
        pollfd fds[] = {{writer_->settled.fd(), POLLIN, 0}, {stop_.fd(), POLLIN, 0}};
        poll(fds, 2, -1);
        writer_->settled.clear();
        hurried_ = fds[1].revents != 0;
    }
    if (!giveUp_) {
        giveUp_ = Clock::now() + kHurriedWait;
    }
    while (!idle() && !gone() && Clock::now() < *giveUp_) {
        pollfd settled{writer_->settled.fd(), POLLIN, 0};
        poll(&settled, 1, static_cast<int>(kHurriedWait.count()));
        writer_->settled.clear();
    }
}

bool Output::finish(std::string* complaint) {
    drain();
    const int error = writer_->error();
    if (error == EPIPE) {
        return true;  // `watch | head`: the reader has what it wanted
    }
    if (error != 0) {
        *complaint = std::string("cannot write standard output: ") + std::strerror(error);
        return false;
    }
    if (const long count = writer_->leftOut(); count > 0) {
        *complaint = "standard output was not read in time; " + std::to_string(count) + " lines were left out";
    }
    return true;
}

}  // namespace qvn::tools
