#include "Writer.h"

#include <pthread.h>
#include <sys/eventfd.h>

#include <new>
#include <system_error>
#include <thread>

namespace fdb {

using qvn::sync::MutexLock;

Writer& Writer::instance() {
    static Writer& writer = *new Writer;
    return writer;
}

std::error_code Writer::ready() {
    const MutexLock lock(mMutex);
    if (mWake) {
        return {};
    }
    qvn::host::UniqueFd wake(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC));
    if (!wake) {
        return qvn::host::lastError();
    }
    mPolled.assign(1, pollfd{wake.get(), POLLIN, 0});
    try {
        std::thread([this] { run(); }).detach();
    } catch (const std::system_error& error) {
        return error.code();
    }
    mWake = std::move(wake);
    return {};
}

void Writer::add(std::shared_ptr<Queued> queued) {
    const MutexLock lock(mMutex);
    mAdded.push_back(std::move(queued));
    if (mAdded.size() == 1) {
        ::eventfd_write(mWake.get(), 1);
    }
}

void Writer::run() {
    pthread_setname_np(pthread_self(), "fdb_writer");
    for (;;) {
        if (::poll(mPolled.data(), mPolled.size(), -1) > 0) {
            flushThoseWithRoom();
            flushAdded();
        }
    }
}

void Writer::flushThoseWithRoom() {
    for (size_t i = mFull.size(); i-- > 0;) {
        if (mPolled[i + 1].revents != 0 && mFull[i]->flush()) {
            mFull.erase(mFull.begin() + static_cast<std::ptrdiff_t>(i));
            mPolled.erase(mPolled.begin() + static_cast<std::ptrdiff_t>(i + 1));
        }
    }
}

void Writer::flushAdded() {
    {
        const MutexLock lock(mMutex);
        eventfd_t ignored;
        ::eventfd_read(mWake.get(), &ignored);
        mTaken.swap(mAdded);
    }
    for (std::shared_ptr<Queued>& queued : mTaken) {
        if (!queued->flush()) {
            awaitRoom(std::move(queued));
        }
    }
    mTaken.clear();
}

void Writer::awaitRoom(std::shared_ptr<Queued> queued) {
    try {
        mFull.reserve(mFull.size() + 1);
        mPolled.reserve(mPolled.size() + 1);
    } catch (const std::bad_alloc&) {
        queued->close();  // nobody would write the rest of a frame
        return;
    }
    mPolled.push_back({queued->fd(), POLLOUT, 0});
    mFull.push_back(std::move(queued));
}

}  // namespace fdb
