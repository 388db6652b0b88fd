#pragma once

#include <vehicle/VehicleClient.h>

#include <vector>

#include "common/StopSignals.h"
#include "sync/Mutex.h"

namespace qvn::tools {

/// One call of the vehicle client's callbacks.
struct Update {
    enum class Kind { Value, Status };

    Kind kind = Kind::Value;
    int property = 0;
    platform::vehicle::VehiclePropValue value;  ///< of a Value
    platform::vehicle::PropertyType type = platform::vehicle::PROPERTY_TYPE_UNKNOWN;
    platform::vehicle::VehiclePropertyStatus status = platform::vehicle::VEHICLE_PROPERTY_STATUS_AVAILABLE;
};

/// Carries what the vehicle client reports on its own threads over to the main thread, without loss and in order; only
/// a value that was there before the subscription may come after a newer one.
/// There is one for the process, since the client's callbacks are plain functions.
class PropertyFeed {
public:
    static PropertyFeed& instance();

    /// Subscribes the properties. False when the vehicle client could not start.
    bool subscribe(const std::vector<int>& properties);

    /// Readable while updates wait.
    int fd() const { return wakeUp_.fd(); }

    /// Takes all updates that wait.
    std::vector<Update> take();

private:
    PropertyFeed() = default;
    void push(Update update);

    sync::Mutex mutex_;
    std::vector<Update> updates_ QVN_GUARDED_BY(mutex_);
    WakeUp wakeUp_;
};

}  // namespace qvn::tools
