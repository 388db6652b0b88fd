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

    WakeUp mAdded;
    sync::Mutex mMutex;
    std::deque<std::string> mWaiting QVN_GUARDED_BY(mMutex);
    std::size_t mBytes QVN_GUARDED_BY(mMutex) = 0;
    long mInHand QVN_GUARDED_BY(mMutex) = 0;  // texts that the thread is writing
    long mDropped QVN_GUARDED_BY(mMutex) = 0;
    int mError QVN_GUARDED_BY(mMutex) = 0;
    bool mClosed QVN_GUARDED_BY(mMutex) = false;
};

void Output::Writer::add(std::string text) {
    const sync::MutexLock lock(mMutex);
    if (mError != 0 || text.empty()) {
        return;
    }
    mBytes += text.size();
    mWaiting.push_back(std::move(text));
    for (; mBytes > kMostWaiting && mWaiting.size() > 1; ++mDropped) {
        mBytes -= mWaiting.front().size();
        mWaiting.pop_front();
    }
    mAdded.notify();
}

void Output::Writer::close() {
    const sync::MutexLock lock(mMutex);
    mClosed = true;
    mAdded.notify();
}

bool Output::Writer::idle() {
    const sync::MutexLock lock(mMutex);
    return mWaiting.empty() && mInHand == 0;
}

int Output::Writer::error() {
    const sync::MutexLock lock(mMutex);
    return mError;
}

long Output::Writer::leftOut() {
    const sync::MutexLock lock(mMutex);
    return mDropped + mInHand + static_cast<long>(mWaiting.size());
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
        const sync::MutexLock lock(mMutex);
        std::string text;
        mInHand = 0;
        // No more than a pipe takes at once: it is counted as a whole when the reader does not get it.
        while (!mClosed && !mWaiting.empty() && (text.empty() || text.size() + mWaiting.front().size() <= PIPE_BUF)) {
            mBytes -= mWaiting.front().size();
            text += mWaiting.front();
            mWaiting.pop_front();
            ++mInHand;
        }
        if (mClosed || !text.empty()) {
            return text;
        }
        settled.notify();
    } while (awaitText());
    return {};
}

/// False when the reader goes away instead.
bool Output::Writer::awaitText() {
    pollfd fds[] = {{STDOUT_FILENO, 0, 0}, {mAdded.fd(), POLLIN, 0}};
    poll(fds, 2, -1);
    if (fds[0].revents != 0) {
        fail((fds[0].revents & POLLNVAL) != 0 ? EBADF : EPIPE);
        return false;
    }
    mAdded.clear();
    return true;
}

void Output::Writer::fail(int error) {
    const sync::MutexLock lock(mMutex);
    mError = error;
    mWaiting.clear();
    settled.notify();
    failed.notify();
}

Output::Output(const StopSignals& stop)
    : mStop(stop), mWriter(std::make_shared<Writer>()), mThread([writer = mWriter] { writer->run(); }) {}

Output::~Output() {
    mWriter->close();
    // A thread that hangs in a write ends with the process.
    if (idle() || gone()) {
        mThread.join();
    } else {
        mThread.detach();
    }
}

void Output::write(std::string text) {
    mWriter->add(std::move(text));
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
    return mWriter->idle();
}

bool Output::gone() const {
    return mWriter->error() != 0;
}

int Output::fd() const {
    return mWriter->failed.fd();
}

void Output::drain() {
    while (!mHurried && !idle() && !gone()) {
        pollfd fds[] = {{mWriter->settled.fd(), POLLIN, 0}, {mStop.fd(), POLLIN, 0}};
        poll(fds, 2, -1);
        mWriter->settled.clear();
        mHurried = fds[1].revents != 0;
    }
    if (!mGiveUp) {
        mGiveUp = Clock::now() + kHurriedWait;
    }
    while (!idle() && !gone() && Clock::now() < *mGiveUp) {
        pollfd settled{mWriter->settled.fd(), POLLIN, 0};
        poll(&settled, 1, static_cast<int>(kHurriedWait.count()));
        mWriter->settled.clear();
    }
}

bool Output::finish(std::string* complaint) {
    drain();
    const int error = mWriter->error();
    if (error == EPIPE) {
        return true;  // `watch | head`: the reader has what it wanted
    }
    if (error != 0) {
        *complaint = std::string("cannot write standard output: ") + std::strerror(error);
        return false;
    }
    if (const long count = mWriter->leftOut(); count > 0) {
        *complaint = "standard output was not read in time; " + std::to_string(count) + " lines were left out";
    }
    return true;
}

}  // namespace qvn::tools
