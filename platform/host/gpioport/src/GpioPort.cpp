#include "GpioPort.h"

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <system_error>

#include "host/RuntimeDir.h"
#include "lgklog/lgklog.h"

namespace qvn {
namespace host {
namespace {

constexpr char kLinesDir[] = "gpio";
constexpr int kUnknown = -1;
constexpr int kReleased = 1;
constexpr int kLogError = 1;
constexpr int kRetryMilliseconds = 100;

thread_local bool onPortThread = false;

/** Leaves every signal to the application's own threads. */
void blockSignals() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, nullptr);
}

}  // namespace

int GpioPort::level(int line) {
    const std::string path = runtimeDir() + "/" + kLinesDir + "/" + std::to_string(line);
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) {
        return errno == ENOENT ? kReleased : kUnknown;
    }
    char text[3] = {};
    const ssize_t size = ::read(fd, text, sizeof text);
    ::close(fd);
    const bool oneDigit = size == 1 || (size == 2 && text[1] == '\n');
    return oneDigit && (text[0] == '0' || text[0] == '1') ? text[0] - '0' : kUnknown;
}

bool GpioPort::ofParent() const {
    const pid_t process = process_;
    return process != 0 && process != ::getpid();
}

bool GpioPort::open() {
    if (ofParent()) {
        return false;
    }
    if (onPortThread) {
        return !closing();
    }
    const sync::MutexLock lock(lifecycleMutex_);
    return start();
}

bool GpioPort::watchLine(int line, int edges, Callback callback, void* context) {
    if (ofParent()) {
        return false;
    }
    if (onPortThread) {
        return add(line, edges, callback, context);
    }
    const sync::MutexLock lock(lifecycleMutex_);
    return start() && add(line, edges, callback, context);
}

void GpioPort::close() {
    if (ofParent()) {
        return;  // its thread is not here, its descriptors are shared, and its mutexes may be locked for ever
    }
    if (onPortThread) {
        const sync::MutexLock lock(mutex_);
        registrations_.clear();
        return;
    }
    const sync::MutexLock lifecycleLock(lifecycleMutex_);
    if (!thread_.joinable()) {
        return;
    }
    {
        const sync::MutexLock lock(mutex_);
        closing_ = true;
        registrations_.clear();
        wake();
    }
    thread_.join();
    process_ = 0;
    watch_.close();
    const sync::MutexLock lock(mutex_);
    if (wakeFd_ >= 0) {
        ::close(wakeFd_);
        wakeFd_ = -1;
    }
    closing_ = false;
}

bool GpioPort::start() {
    if (thread_.joinable()) {
        return true;
    }
    std::string error;
    if (!ensureRuntimeSubdir(kLinesDir, &error)) {
        lgklog_print(kLogError, "[%s][%d]%s", __func__, __LINE__, error.c_str());
        return false;
    }
    try {
        thread_ = std::thread(&GpioPort::run, this);
    } catch (const std::system_error& problem) {
        lgklog_print(kLogError, "[%s][%d]cannot start the GPIO thread: %s", __func__, __LINE__, problem.what());
        return false;
    }
    process_ = ::getpid();
    return true;
}

bool GpioPort::add(int line, int edges, Callback callback, void* context) {
    const sync::MutexLock lock(mutex_);
    if (closing_) {
        return false;
    }
    const auto same = std::find_if(registrations_.begin(), registrations_.end(),
                                   [&](const Registration& r) { return r.line == line && r.context == context; });
    if (same != registrations_.end()) {
        same->edges = edges;
        same->callback = callback;
    } else {
        registrations_.push_back({line, edges, callback, context, level(line), false});
        if (registrations_.back().level == kUnknown) {
            wake();  // the thread reads it again until it is known
        }
    }
    return true;
}

bool GpioPort::closing() {
    const sync::MutexLock lock(mutex_);
    return closing_;
}

void GpioPort::run() {
    onPortThread = true;
    blockSignals();
    pthread_setname_np(pthread_self(), "gpioport");
    bool complained = false;
    for (;;) {
        const bool watching = openSources();
        if (!watching && !complained) {
            lgklog_print(kLogError, "[%s][%d]cannot watch the GPIO lines: %s; trying again", __func__, __LINE__,
                         std::strerror(errno));
            complained = true;
        }
        const int wakeFd = takeWakeUps();
        if (closing()) {
            return;
        }
        if (watching) {
            watch_.drain();  // which names changed does not matter: a level that is the same as before is no edge
        }
        const bool allRead = sample();
        callPending();
        // Nothing reports the end of what may keep a line from being watched or read, such as a lack of descriptors.
        pollfd sources[] = {{watch_.fd(), POLLIN, 0}, {wakeFd, POLLIN, 0}};
        ::poll(sources, 2, watching && allRead ? -1 : kRetryMilliseconds);
    }
}

bool GpioPort::openSources() {
    {
        const sync::MutexLock lock(mutex_);
        if (wakeFd_ < 0) {
            wakeFd_ = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
        }
        if (wakeFd_ < 0) {
            return false;
        }
    }
    return watch_.fd() >= 0 || watch_.open(runtimeDir() + "/" + kLinesDir);
}

/** Returns the descriptor to wait on for more of them. */
int GpioPort::takeWakeUps() {
    const sync::MutexLock lock(mutex_);
    eventfd_t ignored = 0;
    eventfd_read(wakeFd_, &ignored);
    return wakeFd_;
}

void GpioPort::wake() {
    if (wakeFd_ >= 0) {
        eventfd_write(wakeFd_, 1);
    }
}

bool GpioPort::sample() {
    const sync::MutexLock lock(mutex_);
    bool allRead = true;
    for (Registration& registration : registrations_) {
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
            const sync::MutexLock lock(mutex_);
            const auto due = std::find_if(registrations_.begin(), registrations_.end(),
                                          [](const Registration& r) { return r.pending; });
            if (due == registrations_.end()) {
                return;
            }
            due->pending = false;
            callback = due->callback;
            context = due->context;
        }
        callback(context);
    }
}

}  // namespace host
}  // namespace qvn
