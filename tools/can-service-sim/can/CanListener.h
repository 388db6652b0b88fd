#pragma once

#include <functional>
#include <optional>
#include <string>

#include "can-service-sim/EventLoop.h"
#include "can-service-sim/Journal.h"
#include "can-service-sim/can/CanFrame.h"
#include "desk/FileDescriptor.h"

namespace qvn::tools {

/// Receives the frames of a CAN interface in the event loop. When the interface goes away, it is tried again each
/// second.
class CanListener {
public:
    CanListener(EventLoop& loop, const Journal& journal, std::string interface,
                std::function<void(const CanFrame&)> onFrame);

    /// Begins to receive. False when the interface is missing or down; `error` is one sentence for the user then.
    bool start(std::string* error);

private:
    void read();
    void tryAgainLater();

    EventLoop& mLoop;
    const Journal& mJournal;
    std::string mInterface;
    std::function<void(const CanFrame&)> mOnFrame;
    std::optional<FileDescriptor> mSocket;
};

}  // namespace qvn::tools
