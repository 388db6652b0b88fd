#include "can-service-sim/can/CanListener.h"

#include <chrono>
#include <utility>

#include "can-service-sim/can/CanSocket.h"

namespace qvn::tools {
namespace {

constexpr std::chrono::seconds kRetryAfter(1);

}  // namespace

CanListener::CanListener(EventLoop& loop, const Journal& journal, std::string interface,
                         std::function<void(const CanFrame&)> onFrame)
    : mLoop(loop), mJournal(journal), mInterface(std::move(interface)), mOnFrame(std::move(onFrame)) {}

bool CanListener::start(std::string* error) {
    const int socket = openCanInterface(mInterface, error);
    if (socket < 0) {
        return false;
    }
    mSocket.emplace(socket, "CAN socket");
    mLoop.watch(socket, [this] { read(); });
    mJournal.note("CAN interface " + mInterface + " is received from");
    return true;
}

void CanListener::read() {
    std::string error;
    if (readCanFrames(mSocket->get(), mOnFrame, &error)) {
        return;
    }
    Journal::error("CAN interface " + mInterface + " went away: " + error + "; it is tried again each second");
    mLoop.unwatch(mSocket->get());
    mSocket.reset();
    tryAgainLater();
}

void CanListener::tryAgainLater() {
    mLoop.at(Clock::now() + kRetryAfter, [this] {
        std::string error;
        if (!start(&error)) {
            tryAgainLater();
        }
    });
}

}  // namespace qvn::tools
