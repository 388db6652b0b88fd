#ifndef CLIENT_VEHICLE_OBSERVER_H
#define CLIENT_VEHICLE_OBSERVER_H

#include <vehicle/VehicleState.h>

#include <vector>

namespace qvn {
namespace platform {
namespace vehicle {

/// Sees what a core receives, after the core's subscriber has, and outside the core's locks. Values come on the thread
/// that dispatched them, so that one of the reverse line may be told after a newer one of the bus: the time stamps
/// tell. Everything else comes on the worker.
class VehicleObserver {
public:
    /// Reception is Received.
    virtual void valueReceived(const PropertyState& state) = 0;
    virtual void statusReported(int property, VehiclePropertyStatus status) = 0;
    virtual void serviceChanged(const ServiceState& state) = 0;
    /// The core is being destroyed: nothing more is told.
    virtual void observationEnded() = 0;

protected:
    ~VehicleObserver() = default;
};

/// What a core knew when an observer began: everything after it is told.
struct VehicleSnapshot {
    std::vector<PropertyState> values;  ///< of every property that is served, with or without a value
    std::vector<int> timedOut;          ///< properties
    ServiceState service;
};

}  // namespace vehicle
}  // namespace platform
}  // namespace qvn

#endif  // CLIENT_VEHICLE_OBSERVER_H
