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
    : loop_(loop), journal_(journal), interface_(std::move(interface)), onFrame_(std::move(onFrame)) {}

bool CanListener::start(std::string* error) {
    const int socket = openCanInterface(interface_, error);
    if (socket < 0) {
        return false;
    }
    socket_.emplace(socket, "CAN socket");
    loop_.watch(socket, [this] { read(); });
    journal_.note("CAN interface " + interface_ + " is received from");
    return true;
}

void CanListener::read() {
    std::string error;
    if (readCanFrames(socket_->get(), onFrame_, &error)) {
        return;
    }
    Journal::error("CAN interface " + interface_ + " went away: " + error + "; it is tried again each second");
    loop_.unwatch(socket_->get());
    socket_.reset();
    tryAgainLater();
}

void CanListener::tryAgainLater() {
    loop_.at(Clock::now() + kRetryAfter, [this] {
        std::string error;
        if (!start(&error)) {
            tryAgainLater();
        }
    });
}

}  // namespace qvn::tools
