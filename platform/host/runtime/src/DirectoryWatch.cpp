#include "host/DirectoryWatch.h"

#include <limits.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <cerrno>

#include "Path.h"

namespace qvn::host {
namespace {

constexpr std::uint32_t kSelfGone = IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT | IN_IGNORED;
constexpr std::uint32_t kDirectoryMask = IN_CREATE | IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE |
                                         IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR | IN_DONT_FOLLOW;
constexpr std::uint32_t kAncestorMask = IN_CREATE | IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

}  // namespace

void DirectoryWatch::start(const std::string& directory, std::function<void()> changed) {
    stop();
    mDirectory = directory;
    mChanged = std::move(changed);
    watch();
}

void DirectoryWatch::stop() {
    mRetry.stop();
    mInotify.close();
    mWatched.clear();
    mWatch = -1;
}

/// False when the system is short of something; then it is tried again.
bool DirectoryWatch::watch() {
    if (const std::error_code error = open()) {
        retry(error);
        return false;
    }
    mRetry.succeeded();
    await();
    return true;
}

void DirectoryWatch::retry(const std::error_code& error) {
    stop();
    mRetry.later(mWhat + ": " + error.message(), [this] {
        if (watch()) {
            report();
        }
    });
}

std::error_code DirectoryWatch::open() {
    UniqueFd inotify(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    if (!inotify) {
        return lastError();
    }
    const std::error_code error = mInotify.open(mLoop, std::move(inotify));
    return error ? error : settle();
}

/// Watches the directory or, while it is missing, its nearest ancestor that exists. What appears between looking for
/// it and watching its parent would be missed, so this looks again until the answer is the same twice.
std::error_code DirectoryWatch::settle() {
    for (;;) {
        std::string candidate = mDirectory;
        int watch = inotify_add_watch(mInotify.get(), candidate.c_str(), kDirectoryMask);
        while (watch < 0 && candidate != parentOf(candidate)) {
            candidate = parentOf(candidate);
            watch = inotify_add_watch(mInotify.get(), candidate.c_str(), kAncestorMask);
        }
        if (watch < 0) {
            return lastError();
        }
        const bool repeated = watch == mWatch && candidate == mWatched;
        if (mWatch >= 0 && watch != mWatch) {
            inotify_rm_watch(mInotify.get(), mWatch);
        }
        mWatch = watch;
        mWatched = candidate;
        if (repeated || candidate == mDirectory) {
            return {};
        }
    }
}

/// Takes what waits in the descriptor. Whether the watch may have to move to another directory.
bool DirectoryWatch::takeEvents() {
    bool moves = false;
    alignas(inotify_event) char buffer[16 * (sizeof(inotify_event) + NAME_MAX + 1)];
    ssize_t size = 0;
    while ((size = ::read(mInotify.get(), buffer, sizeof buffer)) > 0 || (size < 0 && errno == EINTR)) {
        for (ssize_t at = 0; at < size;) {
            const auto* event = reinterpret_cast<const inotify_event*>(buffer + at);
            at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
            const bool concerns = event->wd == mWatch && (!isThere() || (event->mask & kSelfGone) != 0);
            moves = moves || concerns || (event->mask & IN_Q_OVERFLOW) != 0;
        }
    }
    return moves;
}

void DirectoryWatch::await() {
    mInotify.awaitReadable([this] { onReadable(); });
}

void DirectoryWatch::onReadable() {
    const bool wasThere = isThere();
    const std::error_code error = takeEvents() ? settle() : std::error_code();
    error ? retry(error) : await();
    if (wasThere || isThere()) {
        report();
    }
}

void DirectoryWatch::report() {
    const std::function<void()> changed = mChanged;  // a copy, since the function may start or destroy this watch
    changed();
}

}  // namespace qvn::host
