#include "GpioPort.h"

#include <fcntl.h>
#include <host/DirectoryWatch.h>
#include <host/Log.h>
#include <host/RuntimeDir.h>
#include <host/UniqueFd.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <string>
#include <system_error>

namespace qvn::host {
namespace {

constexpr char kCannotWatch[] = "gpioport: cannot watch the GPIO lines";
constexpr int kUnknown = -1;
constexpr int kReleased = 1;

thread_local bool onPortThread = false;

std::string linesDir() {
    return runtimeDir() + "/" + kGpioFolder;
}

/// Leaves every signal to the application's own threads.
void blockSignals() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, nullptr);
}

}  // namespace

int GpioPort::level(int line) {
    const UniqueFd fd(::open(gpioLinePath(line).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!fd) {
        return errno == ENOENT ? kReleased : kUnknown;
    }
    char text[3] = {};
    const ssize_t size = ::read(fd.get(), text, sizeof text);
    const bool oneDigit = size == 1 || (size == 2 && text[1] == '\n');
    return oneDigit && (text[0] == '0' || text[0] == '1') ? text[0] - '0' : kUnknown;
}

bool GpioPort::ofParent() const {
    const pid_t process = mProcess;
    return process != 0 && process != ::getpid();
}

bool GpioPort::open() {
    if (ofParent()) {
        return false;
    }
    if (onPortThread) {
        return !closing();
    }
    const sync::MutexLock lock(mLifecycleMutex);
    return start();
}

bool GpioPort::watchLine(int line, int edges, Callback callback, void* context) {
    if (ofParent()) {
        return false;
    }
    if (onPortThread) {
        return add(line, edges, callback, context);
    }
    const sync::MutexLock lock(mLifecycleMutex);
    return start() && add(line, edges, callback, context);
}

void GpioPort::close() {
    if (ofParent()) {
        return;  // its thread does not exist here, its descriptors are shared, and its mutexes may be locked for ever
    }
    if (onPortThread) {
        const sync::MutexLock lock(mMutex);
        mRegistrations.clear();
        return;
    }
    const sync::MutexLock lifecycleLock(mLifecycleMutex);
    if (!mThread.joinable()) {
        return;
    }
    {
        const sync::MutexLock lock(mMutex);
        mClosing = true;
        mRegistrations.clear();
        mChanged.notify_all();
        if (mLoop) {
            mLoop->stop();
        }
    }
    mThread.join();
    mProcess = 0;
    const sync::MutexLock lock(mMutex);
    mLoop.reset();
    mClosing = false;
}

bool GpioPort::start() {
    if (mThread.joinable()) {
        return true;
    }
    std::string error;
    if (!ensureRuntimeSubdir(kGpioFolder, &error)) {
        lgklog_print(kLogError, "gpioport: %s; trying again", error.c_str());
    }
    try {
        mThread = std::thread(&GpioPort::run, this);
    } catch (const std::system_error& problem) {
        lgklog_print(kLogError, "gpioport: cannot start the thread: %s", problem.what());
        return false;
    }
    mProcess = ::getpid();
    return true;
}

bool GpioPort::add(int line, int edges, Callback callback, void* context) {
    const sync::MutexLock lock(mMutex);
    if (mClosing) {
        return false;
    }
    const auto same = std::find_if(mRegistrations.begin(), mRegistrations.end(),
                                   [&](const Registration& r) { return r.line == line && r.context == context; });
    if (same != mRegistrations.end()) {
        same->edges = edges;
        same->callback = callback;
    } else {
        mRegistrations.push_back({line, edges, callback, context, level(line), false});
        if (mRegistrations.back().level == kUnknown && mLoop) {
            mLoop->post([this] { serve(); });  // it reads the line again until the level is known
        }
    }
    return true;
}

bool GpioPort::closing() {
    const sync::MutexLock lock(mMutex);
    return mClosing;
}

void GpioPort::run() {
    onPortThread = true;
    blockSignals();
    pthread_setname_np(pthread_self(), "gpioport");
    for (bool complained = false; !closing(); complained = true) {
        const char* const problem = serveLines();
        mNextSample.reset();
        if (problem && !complained) {
            lgklog_print(kLogError, "%s: %s; trying again", kCannotWatch, problem);
        }
        sync::MutexLock lock(mMutex);
        if (!mClosing) {
            mChanged.wait_for(lock.native(), Retry::kPause);
        }
    }
}

const char* GpioPort::serveLines() {
    try {
        if (!ensureRuntimeSubdir(kGpioFolder, nullptr)) {
            return nullptr;  // the reason is in the log
        }
        const auto loop = std::make_shared<EventLoop>();
        {
            const sync::MutexLock lock(mMutex);
            if (mClosing) {
                return nullptr;
            }
            mLoop = loop;
        }
        mNextSample.emplace(*loop);
        // Which file has changed does not matter: a level that is the same as before is no edge.
        DirectoryWatch watch(*loop, kCannotWatch);
        watch.start(linesDir(), [this] { serve(); });
        serve();
        loop->start("", true);
        return nullptr;
    } catch (const std::system_error& problem) {
        return std::strerror(problem.code().value());
    } catch (const std::bad_alloc&) {
        return std::strerror(ENOMEM);
    }
}

void GpioPort::serve() {
    // Nothing tells when a line that cannot be read now can be read again.
    bool complete = false;
    try {
        complete = sample();
    } catch (const std::bad_alloc&) {
        lgklog_print(kLogError, "gpioport: out of memory; the lines are read again");
    }
    if (complete) {
        mNextSample->stop();
    } else {
        onceThereIsMemory([this] { mNextSample->start(Retry::kPause, [this] { serve(); }); });
    }
    callPending();
}

bool GpioPort::sample() {
    const sync::MutexLock lock(mMutex);
    bool allRead = true;
    for (Registration& registration : mRegistrations) {
        const int now = level(registration.line);
        allRead = allRead && now != kUnknown;
        if (now == kUnknown || now == registration.level) {
            continue;  // a file that is being rewritten is unknown until its writer is done
        }
        registration.level = now;
        registration.pending = (registration.edges & (now == 1 ? kRising : kFalling)) != 0;
    }
    return allRead;
}

void GpioPort::callPending() {
    for (;;) {
        Callback callback = nullptr;
        void* context = nullptr;
        {
            const sync::MutexLock lock(mMutex);
            const auto due = std::find_if(mRegistrations.begin(), mRegistrations.end(),
                                          [](const Registration& r) { return r.pending; });
            if (due == mRegistrations.end()) {
                return;
            }
            due->pending = false;
            callback = due->callback;
            context = due->context;
        }
        callback(context);
    }
}

}  // namespace qvn::host
