#include "host/DirectoryWatch.h"

#include <limits.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <new>

#include "Path.h"

namespace qvn::host {
namespace {

constexpr std::uint32_t kSelfGone = IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT | IN_IGNORED;
constexpr std::uint32_t kDirectoryMask = IN_CREATE | IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE |
                                         IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR | IN_DONT_FOLLOW;
constexpr std::uint32_t kAboveMask = IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
constexpr std::uint32_t kMissingMask = kAboveMask | IN_CREATE | IN_MOVED_TO;

/// What a step returns; a lack of memory is an error like that of anything else.
template <class Step>
std::error_code errorOf(Step step) {
    try {
        return step();
    } catch (const std::bad_alloc&) {
        return std::make_error_code(std::errc::not_enough_memory);
    }
}

bool contains(const std::vector<int>& watches, int watch) {
    return std::find(watches.begin(), watches.end(), watch) != watches.end();
}

}  // namespace

void DirectoryWatch::start(const std::string& directory, std::function<void()> changed) {
    stop();
    mDirectory = directory;
    mChanged = std::make_shared<const std::function<void()>>(std::move(changed));
    watch();
}

void DirectoryWatch::stop() {
    mRetry.stop();
    mInotify.close();
    mWatched.clear();
    mWatches.clear();
}

/// False when the system is short of something; then it is tried again.
bool DirectoryWatch::watch() {
    if (const std::error_code error = errorOf([this] { return open(); })) {
        retry(error);
        return false;
    }
    mRetry.succeeded();
    return true;
}

void DirectoryWatch::retry(const std::error_code& error) {
    stop();
    onceThereIsMemory([&] {
        mRetry.later(mWhat + ": " + error.message(), [this] {
            if (watch()) {
                report();
            }
        });
    });
}

std::error_code DirectoryWatch::open() {
    UniqueFd inotify(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    if (!inotify) {
        return lastError();
    }
    const std::error_code error = mInotify.open(mLoop, std::move(inotify));
    return error ? error : await(true);
}

std::error_code DirectoryWatch::await(bool moves) {
    const std::error_code error = moves ? settle() : std::error_code();
    if (!error) {
        mInotify.awaitReadable([this] { onReadable(); });
    }
    return error;
}

/// Watches the directory or, while it is missing, its nearest ancestor that exists, and whether one above that moves.
/// What appears between looking for it and watching its parent would be missed, so this looks again until the answer is
/// the same twice.
std::error_code DirectoryWatch::settle() {
    for (;;) {
        std::string nearest = mDirectory;
        std::vector<int> watches = {watchOne(nearest, kDirectoryMask)};
        while (watches.back() < 0 && nearest != parentOf(nearest)) {
            nearest = parentOf(nearest);
            watches.back() = watchOne(nearest, kMissingMask);
        }
        if (watches.back() < 0) {
            return lastError();
        }
        for (std::string above = parentOf(nearest); above != parentOf(above); above = parentOf(above)) {
            watches.push_back(watchOne(above, kAboveMask));  // one that may not be read cannot be watched
        }
        const bool repeated = watches == mWatches && nearest == mWatched;
        for (const int watch : mWatches) {
            if (!contains(watches, watch)) {
                inotify_rm_watch(mInotify.get(), watch);
            }
        }
        mWatches = std::move(watches);
        mWatched = std::move(nearest);
        if (repeated) {
            return {};
        }
    }
}

int DirectoryWatch::watchOne(const std::string& directory, std::uint32_t mask) {
    return inotify_add_watch(mInotify.get(), directory.c_str(), mask);
}

/// Takes what waits in the descriptor. Whether the watch may have to move to other directories.
bool DirectoryWatch::takeEvents() {
    bool moves = false;
    alignas(inotify_event) char buffer[16 * (sizeof(inotify_event) + NAME_MAX + 1)];
    ssize_t size = 0;
    while ((size = ::read(mInotify.get(), buffer, sizeof buffer)) > 0 || (size < 0 && errno == EINTR)) {
        for (ssize_t at = 0; at < size;) {
            const auto* event = reinterpret_cast<const inotify_event*>(buffer + at);
            at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
            const bool appears = !isThere() && event->wd == mWatches.front();
            const bool goes = (event->mask & kSelfGone) != 0 && contains(mWatches, event->wd);
            moves = moves || appears || goes || (event->mask & IN_Q_OVERFLOW) != 0;
        }
    }
    return moves;
}

void DirectoryWatch::onReadable() {
    const bool wasThere = isThere();
    if (const std::error_code error = errorOf([this] { return await(takeEvents()); })) {
        retry(error);
    }
    if (wasThere || isThere()) {
        report();
    }
}

void DirectoryWatch::report() {
    const auto changed = mChanged;  // kept, since the function may start or destroy this watch
    (*changed)();
}

}  // namespace qvn::host
