#include "client/ProcessEnd.h"

#include <common_base/fdbus.h>
#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <future>
#include <iostream>
#include <streambuf>
#include <system_error>
#include <thread>
#include <utility>

#include "client/VehicleClientImpl.h"
#include "log/Log.h"

namespace qvn {
namespace platform {
namespace vehicle {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kPatience(2000);
constexpr std::chrono::milliseconds kLeastForTheBus(500);
constexpr std::chrono::milliseconds kForBufferedOutput(200);

/// A context that is busy with a callback answers late; one that could not be started, never.
constexpr int kContextAnswerMilliseconds = 5000;

std::atomic<VehicleClientImpl*> coveredCore{nullptr};

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
        std::cout.flush();
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
    static void endWithoutDestructors();

    BusSilence& mSilence;
    const pid_t mProcess;
};

void Guard::endTraffic() {
    VehicleClientImpl* const core = coveredCore;
    const Clock::time_point deadline = Clock::now() + kPatience;
    const bool callbackRuns = core != nullptr && !core->endCallbacks(deadline);
    if (callbackRuns && !core->isInsideCallback()) {
        QVN_LOG(Error, "[%s][%d]a callback of the application is still running; the process ends without it");
    }
    if (FDB_CONTEXT->isSelf()) {
        return;  // it cannot wait for itself, and runs nothing else any more
    }
    const bool ended = doneBy(std::max(deadline, Clock::now() + kLeastForTheBus), [core, callbackRuns] {
        if (core != nullptr) {
            core->leaveBus(callbackRuns);
        }
        FDB_CONTEXT->exit();
        FDB_CONTEXT->join();
    });
    if (!ended) {
        QVN_LOG(Error,
                "[%s][%d]the bus does not come to rest; the process ends without it, what was on its way is lost");
        endWithoutDestructors();
    }
}

void Guard::endWithoutDestructors() {
    // A thread that reads or writes at this moment holds its stream's lock, perhaps for ever.
    doneBy(Clock::now() + kForBufferedOutput, [] {
        std::cout.flush();
        std::fflush(nullptr);
    });
    std::_Exit(EXIT_FAILURE);
}

}  // namespace

bool ProcessEnd::startBus() {
    static BusSilence silence;
    CFdbContext* const context = CFdbContext::getInstance();
    // A false from start() is no failure by itself: it may be running already.
    const bool runs =
        context->start(FDB_WORKER_ENABLE_FD_LOOP) || context->isSelf() || context->flush(kContextAnswerMilliseconds);
    if (runs) {
        static const Guard guard(silence);
    }
    return runs;
}

void ProcessEnd::cover(VehicleClientImpl& core) {
    coveredCore = &core;
}

}  // namespace vehicle
}  // namespace platform
}  // namespace qvn
