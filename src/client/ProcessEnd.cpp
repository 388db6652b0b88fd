#include "client/ProcessEnd.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <iostream>
#include <system_error>
#include <thread>
#include <utility>

#include "client/VehicleClientImpl.h"
#include "log/Log.h"

namespace qvn {
namespace platform {
namespace vehicle {

namespace {

constexpr std::chrono::seconds kPatience(2);

class Nowhere : public std::streambuf {
protected:
    int_type overflow(int_type character) override { return traits_type::not_eof(character); }
};

/// Takes the core off the bus, then ends the bus's own thread. `callbackRuns`: on another thread, or further up on the
/// stack of the one that called exit().
void endBus(VehicleClientImpl& core, bool callbackRuns) {
    if (callbackRuns) {
        core.abandon();
    } else {
        core.stop();
    }
    FDB_CONTEXT->exit();
    FDB_CONTEXT->join();
}

/// Does that on a thread of its own, so that the wait for it can have an end. False when it has not come to one.
bool endBusInTime(VehicleClientImpl& core, bool callbackRuns) {
    std::packaged_task<void()> task([&core, callbackRuns] { endBus(core, callbackRuns); });
    const std::future<void> ended = task.get_future();
    try {
        std::thread(std::move(task)).detach();
    } catch (const std::system_error&) {
        return false;
    }
    return ended.wait_for(kPatience) == std::future_status::ready;
}

}  // namespace

BusSilence::~BusSilence() {
    if (mOutput != nullptr) {
        std::cout.rdbuf(mOutput);
        std::cout.setstate(mState);
    }
}

void BusSilence::begin() {
    static Nowhere& nowhere = *new Nowhere;
    mState = std::cout.rdstate();
    mOutput = std::cout.rdbuf(&nowhere);
}

ProcessEnd::ProcessEnd(VehicleClientImpl& core, BusSilence& silence)
    : mCore(core), mSilence(silence), mProcess(::getpid()) {}

ProcessEnd::~ProcessEnd() {
    mSilence.begin();
    // The bus's own thread cannot be waited for by itself, nor can anything that needs it.
    if (::getpid() != mProcess || FDB_CONTEXT->isSelf()) {
        return;
    }
    const bool quiet = mCore.closeGate(std::chrono::steady_clock::now() + kPatience);
    if (!quiet) {
        QVN_LOG(Error, "[%s][%d]a callback of the application is still running; the process ends without it");
    }
    if (!endBusInTime(mCore, !quiet || mCore.isInsideCallback())) {
        QVN_LOG(Error,
                "[%s][%d]the bus does not come to rest; the process ends without it, what was on its way is lost");
        std::fflush(nullptr);
        std::_Exit(EXIT_FAILURE);
    }
}

}  // namespace vehicle
}  // namespace platform
}  // namespace qvn
