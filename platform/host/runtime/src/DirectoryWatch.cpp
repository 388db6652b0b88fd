#include "host/DirectoryWatch.h"

#include <limits.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <cerrno>

#include "Path.h"

namespace qvn {
namespace host {
namespace {

constexpr std::uint32_t kSelfGone = IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT | IN_IGNORED;
constexpr std::uint32_t kDirectoryMask = IN_CREATE | IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE |
                                         IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR | IN_DONT_FOLLOW;
constexpr std::uint32_t kAncestorMask = IN_CREATE | IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

}  // namespace

DirectoryWatch::~DirectoryWatch() {
    close();
}

bool DirectoryWatch::open(const std::string& directory) {
    close();
    fd_ = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (fd_ < 0) {
        return false;
    }
    directory_ = directory;
    if (!settle()) {
        const int reason = errno;
        close();
        errno = reason;
        return false;
    }
    return true;
}

void DirectoryWatch::close() {
    if (fd_ >= 0) {
        ::close(fd_);
    }
    fd_ = -1;
    watch_ = -1;
    present_ = false;
    watched_.clear();
}

DirectoryWatch::Changes DirectoryWatch::drain() {
    Changes changes;
    bool unsettled = false;
    alignas(inotify_event) char buffer[16 * (sizeof(inotify_event) + NAME_MAX + 1)];
    ssize_t size = 0;
    while ((size = ::read(fd_, buffer, sizeof buffer)) > 0 || (size < 0 && errno == EINTR)) {
        for (ssize_t at = 0; at < size;) {
            const auto* event = reinterpret_cast<const inotify_event*>(buffer + at);
            at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
            if ((event->mask & IN_Q_OVERFLOW) != 0 || (event->wd == watch_ && !present_)) {
                unsettled = true;
            } else if (event->wd == watch_ && (event->mask & kSelfGone) != 0) {
                changes.directoryGone = true;
                present_ = false;
                unsettled = true;
            } else if (event->wd == watch_ && event->len > 0) {
                changes.names.emplace_back(event->name);
            }
        }
    }
    if (unsettled) {
        settle();
        changes.rescan = present_;
    }
    return changes;
}

/**
 * Watches the directory or, while it is missing, its nearest ancestor that exists. What appears between looking for
 * it and watching its parent would be missed, so this looks again until the answer repeats.
 */
bool DirectoryWatch::settle() {
    for (;;) {
        std::string candidate = directory_;
        int watch = inotify_add_watch(fd_, candidate.c_str(), kDirectoryMask);
        while (watch < 0 && candidate != parentOf(candidate)) {
            candidate = parentOf(candidate);
            watch = inotify_add_watch(fd_, candidate.c_str(), kAncestorMask);
        }
        const bool repeated = watch == watch_ && candidate == watched_;
        if (watch_ >= 0 && watch != watch_) {
            inotify_rm_watch(fd_, watch_);
        }
        watch_ = watch;
        watched_ = candidate;
        present_ = watch >= 0 && candidate == directory_;
        if (repeated || present_) {
            return watch >= 0;
        }
    }
}

}  // namespace host
}  // namespace qvn
