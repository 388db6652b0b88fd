#include "client/ProcessEnd.h"

#include <common_base/fdbus.h>
#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <future>
#include <iostream>
#include <streambuf>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "client/VehicleClientImpl.h"
#include "log/Log.h"
#include "sync/Mutex.h"

namespace qvn {
namespace platform {
namespace vehicle {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kPatience(2000);
constexpr std::chrono::milliseconds kLeastForTheBus(500);
constexpr std::chrono::milliseconds kForOutput(100);

/// A context that is busy with a callback answers late; one that could not be started, never.
constexpr int kContextAnswerMilliseconds = 5000;

/// The cores of the process, and whether it is ending.
class Cores {
public:
    /// Never destroyed: other static objects may have a core.
    static Cores& instance() {
        static Cores& cores = *new Cores;
        return cores;
    }

    bool beginChange(VehicleClientImpl& core, bool made) {
        const sync::MutexLock lock(mMutex);
        if (mEnding) {
            return false;
        }
        ++mChanges;
        if (made) {
            mCores.push_back(&core);
        } else {
            mCores.erase(std::remove(mCores.begin(), mCores.end(), &core), mCores.end());
        }
        return true;
    }
    void endChange() {
        const sync::MutexLock lock(mMutex);
        --mChanges;
        mChanged.notify_all();
    }
    void alsoEnd(ProcessEnd::Callbacks& callbacks) { mOthers = &callbacks; }
    ProcessEnd::Callbacks* others() const { return mOthers; }
    void busRuns() { mBusRuns = true; }
    bool doesBusRun() const { return mBusRuns; }

    /// From now on no change begins. False when one that had begun is not over in time.
    bool close(Clock::time_point deadline) {
        sync::MutexLock lock(mMutex);
        mEnding = true;
        return mChanged.wait_until(lock.native(), deadline, [this]() QVN_REQUIRES(mMutex) { return mChanges == 0; });
    }
    /// To be called when close() was true: nobody changes them any more.
    const std::vector<VehicleClientImpl*>& all() QVN_UNCHECKED_LOCKING { return mCores; }

private:
    sync::Mutex mMutex;
    std::condition_variable mChanged;
    std::vector<VehicleClientImpl*> mCores QVN_GUARDED_BY(mMutex);
    int mChanges QVN_GUARDED_BY(mMutex) = 0;
    bool mEnding QVN_GUARDED_BY(mMutex) = false;
    std::atomic<bool> mBusRuns{false};
    std::atomic<ProcessEnd::Callbacks*> mOthers{nullptr};
};

/// The first client may be in the making when the end has begun already, too late for a Guard. This is destroyed before
/// the static objects of the libraries that a client needs: from then on none is made.
class LastCall {
public:
    LastCall() = default;
    ~LastCall() {
        if (::getpid() == mProcess) {
            Cores::instance().close(Clock::now() + kPatience);
        }
    }
    LastCall(const LastCall&) = delete;
    LastCall& operator=(const LastCall&) = delete;

private:
    const pid_t mProcess = ::getpid();
};
const LastCall lastCall;

/// Does something on a thread of its own, so that the wait for it can have an end: false when it has not come to one.
/// Without a thread to be had it is done here.
bool doneBy(Clock::time_point deadline, std::function<void()> work) {
    std::packaged_task<void()> task(work);
    const std::future<void> done = task.get_future();
    try {
        std::thread(std::move(task)).detach();
    } catch (const std::system_error&) {
        work();
        return true;
    }
    return done.wait_until(deadline) == std::future_status::ready;
}

[[noreturn]] void endWithoutDestructors() {
    // A thread that reads or writes at this moment holds its stream's lock, perhaps for ever: that of standard error,
    // most likely.
    doneBy(Clock::now() + kForOutput, [] {
        std::cout.flush();
        std::fflush(stdout);
        std::fflush(nullptr);
    });
    std::_Exit(EXIT_FAILURE);
}

/// A log that nobody reads holds up whoever writes to it, and would hold up the standard streams' destructors, too.
void logError(const char* format) {
    const char* const function = __func__;
    const bool logged = doneBy(Clock::now() + kForOutput,
                               [function, format] { log::print(lgk::LogLevel::Error, function, __LINE__, format); });
    if (!logged) {
        endWithoutDestructors();
    }
}

class Nowhere : public std::streambuf {
protected:
    int_type overflow(int_type character) override { return traits_type::not_eof(character); }
};

/// The destructor of FDBus's context may write a line of its own to standard output, among what the application prints
/// there. An object of this class, made before the context and so destroyed after it, ends the silence that was begun
/// just before the context goes.
class BusSilence {
public:
    BusSilence() = default;
    ~BusSilence() {
        if (mOutput != nullptr) {
            std::cout.rdbuf(mOutput);
            std::cout.setstate(mState);
        }
    }
    BusSilence(const BusSilence&) = delete;
    BusSilence& operator=(const BusSilence&) = delete;

    void begin() {
        static Nowhere& nowhere = *new Nowhere;
        mState = std::cout.rdstate();
        mOutput = std::cout.rdbuf(&nowhere);
    }

private:
    std::streambuf* mOutput = nullptr;
    std::ios_base::iostate mState = std::ios_base::goodbit;
};

/// What happens at the end of the process. Made after the context, so destroyed before it.
class Guard {
public:
    explicit Guard(BusSilence& silence) : mSilence(silence), mProcess(::getpid()) {}
    ~Guard() {
        if (::getpid() == mProcess) {
            endTraffic();
        }
        mSilence.begin();
    }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

private:
    static void endTraffic();
    static bool endCallbacks(Clock::time_point deadline);
    static bool endBus(Clock::time_point deadline, bool callbackRuns);

    BusSilence& mSilence;
    const pid_t mProcess;
};

void Guard::endTraffic() {
    const Clock::time_point deadline = Clock::now() + kPatience;
    if (!Cores::instance().close(deadline)) {
        logError("[%s][%d]a client is still being made or destroyed; the process ends without it");
        endWithoutDestructors();
    }
    const bool callbackRuns = !endCallbacks(deadline);
    if (!Cores::instance().doesBusRun() || FDB_CONTEXT->isSelf()) {
        return;  // the bus's thread cannot wait for itself, and runs nothing else any more
    }
    if (!endBus(std::max(deadline, Clock::now() + kLeastForTheBus), callbackRuns)) {
        logError("[%s][%d]the bus does not come to rest; the process ends without it, what was on its way is lost");
        endWithoutDestructors();
    }
}

/// False when a callback still runs: the one that calls exit(), or one that takes too long.
bool Guard::endCallbacks(Clock::time_point deadline) {
    const std::vector<VehicleClientImpl*>& cores = Cores::instance().all();
    ProcessEnd::Callbacks* const others = Cores::instance().others();
    const bool inside =
        (others != nullptr && others->isInside()) ||
        std::any_of(cores.begin(), cores.end(), [](VehicleClientImpl* core) { return core->isInsideCallback(); });
    bool ended = true;
    for (VehicleClientImpl* const core : cores) {
        ended = core->endCallbacks(inside ? Clock::now() : deadline) && ended;
    }
    if (others != nullptr) {
        ended = others->end(inside ? Clock::now() : deadline) && ended;
    }
    if (!ended && !inside) {
        ProcessEnd::leaveCallbackBehind();
    }
    return ended;
}

bool Guard::endBus(Clock::time_point deadline, bool callbackRuns) {
    return doneBy(deadline, [callbackRuns] {
        for (VehicleClientImpl* const core : Cores::instance().all()) {
            core->leaveBus(callbackRuns);
        }
        FDB_CONTEXT->exit();
        FDB_CONTEXT->join();
        std::fflush(stderr);  // as the end of the process will: it must not be held up by somebody who logs
    });
}

}  // namespace

void ProcessEnd::alsoEnd(Callbacks& callbacks) {
    Cores::instance().alsoEnd(callbacks);
}

ProcessEnd::CoreChange::CoreChange(VehicleClientImpl& core, Kind kind)
    : mAllowed(Cores::instance().beginChange(core, kind == kMade)) {}

ProcessEnd::CoreChange::~CoreChange() {
    if (mAllowed) {
        Cores::instance().endChange();
    }
}

void ProcessEnd::leaveCallbackBehind() {
    static std::atomic<bool> told{false};
    if (!told.exchange(true)) {
        logError("[%s][%d]a callback of the application is still running; the process ends without it");
    }
}

bool ProcessEnd::startBus() {
    static BusSilence silence;
    CFdbContext* const context = CFdbContext::getInstance();
    // Before the context's thread runs: the process may end on another thread while this one is here.
    static const Guard guard(silence);
    // A false from start() is no failure by itself: it may be running already.
    if (!context->start(FDB_WORKER_ENABLE_FD_LOOP) && !context->isSelf() &&
        !context->flush(kContextAnswerMilliseconds)) {
        return false;
    }
    Cores::instance().busRuns();
    return true;
}

}  // namespace vehicle
}  // namespace platform
}  // namespace qvn
