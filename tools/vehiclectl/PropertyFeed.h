#pragma once

#include <vehicle/VehicleClient.h>

#include <vector>

#include "desk/StopSignals.h"
#include "desk/WakeUp.h"
#include "sync/Mutex.h"

namespace qvn::tools {

/// Something new about a property.
struct Update {
    enum class Kind {
        Value,
        Status,
        Service  ///< the CAN service has come or gone
    };
    enum class Origin {
        Service,      ///< the CAN service, through the vehicle client
        ReverseLine,  ///< the vehicle client made the value itself
        Link          ///< the CAN service, through the tool's own ServiceLink
    };

    Kind kind = Kind::Value;
    Origin origin = Origin::Service;
    int property = 0;
    platform::vehicle::VehiclePropValue value = {};  ///< of a Value
    bool good = true;                                ///< Status: it is received; Service: it is there
    long at = 0;                                     ///< when it happened, CLOCK_MONOTONIC in ns; set by the feed
};

/// Brings what the bus's and the client's threads report to the main thread, complete and in order. One exception: a
/// value that was there before the subscription may come after a newer one. A process has one feed, since the client's
/// callbacks are plain functions.
class PropertyFeed {
public:
    static PropertyFeed& instance();

    /// Subscribes the properties. False when the vehicle client could not start.
    bool subscribe(const std::vector<int>& properties);

    /// Readable while updates wait.
    int fd() const { return wakeUp_.fd(); }

    /// Takes all updates that wait.
    std::vector<Update> take();

    /// Adds an update; from any thread.
    void push(Update update);

private:
    PropertyFeed() = default;

    sync::Mutex mutex_;
    std::vector<Update> updates_ QVN_GUARDED_BY(mutex_);
    WakeUp wakeUp_;
};

}  // namespace qvn::tools
