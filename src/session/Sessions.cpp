#include "session/Sessions.h"

#include <algorithm>
#include <cstdlib>
#include <thread>
#include <utility>

#include "session/Session.h"

namespace qvn {
namespace session {

sync::Mutex mutex;

namespace {

/// Enough for the sessions that a program keeps: they are among its first.
constexpr int kMostExitHandlers = 256;

}  // namespace

Sessions& Sessions::instance() {
    static Sessions& sessions = *new Sessions;
    return sessions;
}

void Sessions::notifyWaiters() {
    if (mWaiting > 0) {
        mSettled.notify_all();
    }
}

bool Sessions::waitFor(const Session& session, sync::MutexLock& lock, const std::function<bool()>& done) {
    setWaiting(&session);
    ++mWaiting;
    while (!done() && !mEnded && !isForItself(session)) {
        mSettled.wait(lock.native());
    }
    --mWaiting;
    setWaiting(nullptr);
    return done();
}

bool Sessions::waitForAll(sync::MutexLock& lock, Time deadline, const std::function<bool(const Session&)>& isBusy) {
    ++mWaiting;
    const bool inTime = mSettled.wait_until(lock.native(), deadline, [&]() QVN_REQUIRES(mutex) {
        return std::none_of(mAll.begin(), mAll.end(), [&](const Session* session) { return isBusy(*session); });
    });
    --mWaiting;
    return inTime;
}

bool Sessions::isForItself(const Session& session) const {
    const std::thread::id self = std::this_thread::get_id();
    for (const Session* next = &session; next != nullptr; next = next->waitsFor) {
        if (next->isRunBy(self)) {
            return true;
        }
    }
    return false;
}

/// For whom the handlers wait that the calling thread is inside of.
void Sessions::setWaiting(const Session* session) {
    for (Session* const each : mAll) {
        if (each->isRunBy(std::this_thread::get_id())) {
            each->waitsFor = session;
        }
    }
    notifyWaiters();  // who waits for one of these may now be waiting for itself
}

void Sessions::seeExit() {
    if (mExitHandlers < kMostExitHandlers && std::atexit(mExitHandler) == 0) {
        ++mExitHandlers;
    }
}

Change::Change() {
    mutex.lock();
}

Change::~Change() noexcept(false) {
    std::vector<std::shared_ptr<Session>>& all = Sessions::instance().mToSignal;
    while (!all.empty()) {
        {
            const std::shared_ptr<Session> session = std::move(all.back());
            all.pop_back();
            mutex.unlock();
            session->signal();  // should that end the thread, the next change signals the others
        }
        mutex.lock();
    }
    mutex.unlock();
}

void Change::willSignal(Session& session) {
    Sessions::instance().mToSignal.push_back(session.shared_from_this());
}

}  // namespace session
}  // namespace qvn
