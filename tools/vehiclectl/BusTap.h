#pragma once

#include <common_base/fdbus.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "desk/WakeUp.h"
#include "sync/Mutex.h"

namespace qvn::tools {

/// What came over the bus, as it came.
struct TapEvent {
    enum class Kind { Signal, MessageTimedOut, MessageOk, ServiceUp, ServiceDown, ReverseEngaged, ReverseReleased };

    long at = 0;  ///< CLOCK_MONOTONIC, ns
    Kind kind = Kind::Signal;
    std::uint32_t code = 0;
    std::string raw;  ///< of a signal
};

/// A client of the CAN service that takes everything as it is, and watches the reverse line. Sets are no broadcasts:
/// nobody but the service sees them.
class BusTap {
public:
    /// Connects in the background, and subscribes these codes whenever the service is there.
    explicit BusTap(std::vector<std::uint32_t> codes);
    ~BusTap();
    BusTap(const BusTap&) = delete;
    BusTap& operator=(const BusTap&) = delete;

    /// Readable while events wait.
    int fd() const { return mWakeUp.fd(); }
    /// Takes all events that wait, in order.
    std::vector<TapEvent> take();

private:
    class Client;

    static void reverseLineMoved(void* tap);
    void push(TapEvent event);

    sync::Mutex mMutex;
    std::vector<TapEvent> mEvents QVN_GUARDED_BY(mMutex);
    WakeUp mWakeUp;
    CBaseWorker mWorker;
    std::unique_ptr<Client> mClient;
};

}  // namespace qvn::tools
