#ifndef CANSERVICE_SERVICE_OBSERVER_H
#define CANSERVICE_SERVICE_OBSERVER_H

#include <vehicle/VehicleProperty.h>

/// What the connection knows beside received values. Everything is told after the application's own callbacks have
/// returned and without a lock held; the reverse line on the thread that reads it, all else on the bus's worker.
class ServiceObserver {
public:
    virtual void serviceChanged(bool there) = 0;
    /// Of every property that one of the message's signals feeds, whether or not somebody has subscribed.
    virtual void statusReported(int property, qvn::platform::vehicle::VehiclePropertyStatus status) = 0;
    /// What the reverse line says where nobody has subscribed; where somebody has, it is a value like others. `time`,
    /// CLOCK_MONOTONIC in ns, is before the reading: when two threads tell at once the later time has the present
    /// level.
    virtual void reverseLineRead(int property, int number, long time) = 0;

protected:
    ~ServiceObserver() = default;
};

#endif  // CANSERVICE_SERVICE_OBSERVER_H
