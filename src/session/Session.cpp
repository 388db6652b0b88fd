#include "session/Session.h"

#include <algorithm>

#include "callback/CallApplication.h"
#include "callback/ForkGuard.h"
#include "log/Log.h"

namespace qvn {
namespace session {

namespace {

/// After so many handlers an executor's thread may do something else first.
constexpr int kMostInOneTask = 256;

/// Threads inside an executor at once: more only where it throws though it has taken the task.
constexpr std::size_t kUsualPosters = 8;

}  // namespace

/// While one handler or task runs.
class Session::Running {
public:
    Running(Session& session, Work& work) : mSession(session), mWork(work) {}
    ~Running() {
        release();
        const sync::MutexLock lock(mutex);
        mSession.mRunner = std::thread::id();
        mSession.mRunning = nullptr;
        Sessions::instance().notifyWaiters();
    }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

private:
    /// What a handler that runs no more has captured goes while it still counts as running: who waits for its end may
    /// have what that refers to.
    void release() {
        mWork.task = nullptr;
        Receiver::Handler ended;
        const sync::MutexLock lock(mutex);
        if (mWork.receiver && mWork.receiver->ended) {
            ended.swap(mWork.receiver->handler);
        }
    }

    Session& mSession;
    Work& mWork;
};

/// While the executor takes the task. False when the session has ended.
class Session::Posting {
public:
    explicit Posting(Session& session) : mSession(session) {
        const sync::MutexLock lock(mutex);
        mAllowed = session.mayRun();
        if (mAllowed) {
            session.mPosters.push_back(std::this_thread::get_id());
        }
    }
    ~Posting() {
        if (mAllowed) {
            const sync::MutexLock lock(mutex);
            std::vector<std::thread::id>& all = mSession.mPosters;
            all.erase(std::find(all.begin(), all.end(), std::this_thread::get_id()));
            Sessions::instance().notifyWaiters();
        }
    }
    Posting(const Posting&) = delete;
    Posting& operator=(const Posting&) = delete;

    explicit operator bool() const { return mAllowed; }

private:
    Session& mSession;
    bool mAllowed = false;
};

Session::Session(Executor executor) : mExecutor(std::move(executor)) {}

void Session::start() {
    const std::shared_ptr<Session> self = shared_from_this();
    const std::weak_ptr<Session> session = self;
    mDrain = [session] {
        if (const std::shared_ptr<Session> there = session.lock()) {
            there->drain();
        }
    };
    std::list<Session*> entry{this};  // before there is a thread: from there on nothing may fail
    const sync::MutexLock lock(mutex);
    Sessions::instance().makeRoom();
    mPosters.reserve(kUsualPosters);
    mIsAwake = !mExecutor;
    mThread = std::thread([self] { self->mExecutor ? self->keepTime() : self->serve(); });
    std::list<Session*>& all = Sessions::instance().all();
    all.splice(all.end(), entry);
}

void Session::close() {
    mEnded = true;
    mWake.notify_all();
}

void Session::end() {
    bool isOver = false;
    {
        sync::MutexLock lock(mutex);
        isOver = Sessions::instance().waitFor(*this, lock, [this]() QVN_REQUIRES(mutex) { return !isOccupied(); });
        Sessions::instance().all().remove(this);
    }
    if (isOver && mThread.get_id() != std::this_thread::get_id()) {
        mThread.join();
    } else {
        mThread.detach();
    }
}

void Session::add(const std::shared_ptr<Receiver>& receiver) {
    receiver->place = mReceivers.insert(mReceivers.end(), receiver);
}

std::shared_ptr<Receiver> Session::remove(Receiver& receiver) {
    receiver.ended = true;
    mHeldBack.erase(std::remove_if(mHeldBack.begin(), mHeldBack.end(),
                                   [&](const HeldBack& held) { return held.receiver == &receiver; }),
                    mHeldBack.end());
    std::make_heap(mHeldBack.begin(), mHeldBack.end(), comesLater);
    mTurns.remove(&receiver);
    std::shared_ptr<Receiver> removed = std::move(*receiver.place);
    mReceivers.erase(receiver.place);
    return removed;
}

std::shared_ptr<Receiver> Session::anyReceiver() const {
    return mReceivers.empty() ? nullptr : mReceivers.front();
}

void Session::offer(Receiver& receiver, std::size_t index, const PropertyState& state, Time now) {
    makeRoom();
    switch (receiver.mailbox.offer(index, state, now)) {
        case Mailbox::Offer::Settled:
            break;
        case Mailbox::Offer::Waits:
            willTake(&receiver);
            break;
        case Mailbox::Offer::HeldBack:
            holdBack(receiver, index);
            break;
    }
}

void Session::run(std::list<Task>& task) {
    makeRoom();
    mTasks.splice(mTasks.end(), task);
    willTake(nullptr);
}

/// For what one offer leads to, also later: when memory is short an update must not be without its turn, nor the
/// session's thread need any.
void Session::makeRoom() {
    while (mSpareTurns.size() <= mHeldBack.size()) {
        mSpareTurns.push_back(nullptr);
    }
    if (mHeldBack.size() == mHeldBack.capacity()) {
        mHeldBack.reserve(2 * mHeldBack.size() + 1);
    }
}

void Session::willTake(Receiver* receiver) {
    mSpareTurns.front() = receiver;
    mTurns.splice(mTurns.end(), mSpareTurns, mSpareTurns.begin());
    workHasCome();
}

void Session::workHasCome() {
    if (!mIsAwake && !mEnded) {
        Change::willSignal(*this);
        mIsAwake = true;
    }
}

void Session::holdBack(Receiver& receiver, std::size_t index) {
    const Time until = receiver.mailbox.opensAt(index);
    mHeldBack.push_back({until, &receiver, index});
    std::push_heap(mHeldBack.begin(), mHeldBack.end(), comesLater);
    if (until < mSleepsUntil) {
        mWake.notify_all();
    }
}

void Session::release() {
    if (mHeldBack.empty()) {
        return;
    }
    const Time now = std::chrono::steady_clock::now();
    while (!mHeldBack.empty() && mHeldBack.front().until <= now) {
        const HeldBack due = mHeldBack.front();
        std::pop_heap(mHeldBack.begin(), mHeldBack.end(), comesLater);
        mHeldBack.pop_back();
        if (due.receiver->mailbox.release(due.index, now)) {
            willTake(due.receiver);
        }
    }
}

void Session::signal() {
    if (mExecutor) {
        post();
    } else {
        mWake.notify_all();
    }
}

// The session's own thread.

void Session::serve() {
    try {
        while (waitForWork()) {
            while (runOne()) {
            }
        }
    } catch (const callback::ForcedUnwind&) {
        QVN_LOG(Error,
                "[%s][%d]a handler ended its thread, which is its session's: the session's handlers run no more!");
        const sync::MutexLock lock(mutex);
        mEnded = true;
        throw;
    }
}

bool Session::waitForWork() {
    sync::MutexLock lock(mutex);
    for (; !mEnded; sleep(lock)) {
        mIsAwake = true;
        release();
        if (hasWork()) {
            return true;
        }
        mIsAwake = false;
        Sessions::instance().notifyWaiters();
    }
    return false;
}

void Session::keepTime() {
    for (;;) {
        {
            sync::MutexLock lock(mutex);
            while (!mEnded && (mHeldBack.empty() || std::chrono::steady_clock::now() < mHeldBack.front().until)) {
                sleep(lock);
            }
            if (mEnded) {
                return;
            }
        }
        const Change change;
        release();
    }
}

void Session::sleep(sync::MutexLock& lock) {
    if (mHeldBack.empty()) {
        mSleepsUntil = Time::max();
        mWake.wait(lock.native());
    } else {
        mSleepsUntil = mHeldBack.front().until;
        mWake.wait_until(lock.native(), mSleepsUntil);
    }
    mSleepsUntil = Time::min();
}

// The executor's.

void Session::post() {
    const Posting posting(*this);
    if (!posting) {
        return;
    }
    bool isTaken = false;
    callback::callApplication([this, &isTaken] {
        mExecutor(mDrain);
        isTaken = true;
    });
    if (!isTaken) {
        const sync::MutexLock lock(mutex);
        mIsAwake = false;  // the next update tries again
    }
}

void Session::drain() {
    try {
        for (int i = 0; i < kMostInOneTask && runOne(); ++i) {
        }
    } catch (const callback::ForcedUnwind&) {
        const sync::MutexLock lock(mutex);
        mIsAwake = false;  // the handler ends the executor's thread; the next update asks for another
        throw;
    }
    const Change change;
    if (mRunner != std::thread::id()) {
        return;  // a task that the executor took, and threw: it goes on
    }
    mIsAwake = false;
    if (hasWork()) {
        workHasCome();
    }
}

// Handlers.

void Session::seeExit(bool& seen) {
    if (!seen) {
        seen = true;
        Sessions::instance().seeExit();
    }
}

bool Session::runOne() {
    Work work;
    {
        const sync::MutexLock lock(mutex);
        if (!next(work)) {
            return false;
        }
        seeExit(mHasRun);
        mRunner = std::this_thread::get_id();
        mRunning = work.receiver.get();
    }
    const Running running(*this, work);
    const callback::ForkGuard forkGuard;  // a child could wait for the lock for ever
    callback::callApplication([&work] { work.receiver ? work.receiver->handler(work.state) : work.task(); });
    return true;
}

bool Session::next(Work& work) {
    release();
    const bool isRunning = mRunner != std::thread::id();  // by another task, see drain()
    while (!isRunning && hasWork()) {
        Receiver* const receiver = mTurns.front();
        mSpareTurns.splice(mSpareTurns.begin(), mTurns, mTurns.begin());
        if (receiver == nullptr) {
            work.task = std::move(mTasks.front());
            mTasks.pop_front();
            return true;
        }
        if (receiver->mailbox.take(work.state)) {
            work.receiver = *receiver->place;
            return true;
        }
    }
    return false;
}

// Who is in here.

bool Session::isOccupied() const {
    const std::thread::id self = std::this_thread::get_id();
    return (mRunner != std::thread::id() && mRunner != self) ||
           std::any_of(mPosters.begin(), mPosters.end(), [self](std::thread::id poster) { return poster != self; });
}

bool Session::isInside() const {
    const std::thread::id self = std::this_thread::get_id();
    return mRunner == self || std::find(mPosters.begin(), mPosters.end(), self) != mPosters.end();
}

bool Session::isBusy() const {
    const bool hasNothing = mTurns.empty() && mHeldBack.empty() && mRunner == std::thread::id();
    return !mExecutor && !mEnded && mRunner != std::this_thread::get_id() && !hasNothing;
}

int Session::busyWith() const {
    const Receiver* const receiver = mRunning != nullptr ? mRunning : mTurns.empty() ? nullptr : mTurns.front();
    const Receiver* const known = receiver != nullptr || mHeldBack.empty() ? receiver : mHeldBack.front().receiver;
    return known == nullptr ? 0 : known->properties.front();
}

}  // namespace session
}  // namespace qvn
