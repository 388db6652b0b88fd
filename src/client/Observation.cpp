#include <utility>

#include "canservice/FdbusServiceManager.h"
#include "client/VehicleClientImpl.h"
#include "client/VehicleObserver.h"

namespace qvn {
namespace platform {
namespace vehicle {

namespace {

double numberIn(const VehiclePropValue::RawValue& value) {
    if (!value.floatValues.empty()) {
        return static_cast<double>(value.floatValues[0]);
    }
    if (!value.int32Values.empty()) {
        return value.int32Values[0];
    }
    if (!value.int64Values.empty()) {
        return static_cast<double>(value.int64Values[0]);
    }
    return value.bytes.empty() ? std::numeric_limits<double>::quiet_NaN() : value.bytes[0];
}

PropertyState stateOf(const VehiclePropValue& value, PropertyType type) {
    PropertyState state;
    state.property = value.prop;
    state.type = type;
    state.timestamp = value.timestamp;
    state.payload = numberIn(value.value);
    state.direction = value.value.int32Values.size() > 1 ? value.value.int32Values[1] : 0;
    state.reception = state.hasValue() ? Reception::Received : Reception::NeverReceived;
    state.origin = value.areaId == 0 ? ValueOrigin::ReverseLine : ValueOrigin::Can;
    return state;
}

}  // namespace

VehicleSnapshot VehicleClientImpl::observe(VehicleObserver* newObserver) {
    VehicleSnapshot snapshot;
    const sync::MutexLock state(stateMutex);
    observer = newObserver;
    dispatched.clear();  // the snapshot has it
    for (const VehicleClientProperty& record : propertyCache) {
        snapshot.values.push_back(stateOf(record.propValue, record.propertyType));
    }
    snapshot.timedOut.assign(timedOut.begin(), timedOut.end());
    snapshot.service = service;
    return snapshot;
}

void VehicleClientImpl::endObservation() {
    if (VehicleObserver* const last = observer.exchange(nullptr)) {
        last->observationEnded();
    }
}

void VehicleClientImpl::observeReverseLine() {
    if (serviceManager) {
        serviceManager->observeReverseLine();
    }
}

void VehicleClientImpl::willTell(const VehiclePropValue& value, PropertyType type) {
    dispatched.push_back(stateOf(value, type));
}

void VehicleClientImpl::takeDispatched(std::vector<PropertyState>& states) {
    const sync::MutexLock state(stateMutex);
    states.swap(dispatched);
}

void VehicleClientImpl::tell(std::vector<PropertyState>& states) {
    VehicleObserver* const current = observer;
    if (current == nullptr) {
        return;
    }
    for (const PropertyState& state : states) {
        current->valueReceived(state);
    }
    states.clear();
    const sync::MutexLock state(stateMutex);
    if (dispatched.capacity() == 0) {
        states.swap(dispatched);  // to be used again
    }
}

void VehicleClientImpl::serviceChanged(bool there) {
    ServiceState changed;
    changed.presence = there ? ServicePresence::There : ServicePresence::Gone;
    getTimestamp(changed.since);
    {
        const sync::MutexLock state(stateMutex);
        service = changed;
        if (!there) {
            timedOut.clear();  // another service knows nothing of it
        }
    }
    if (VehicleObserver* const current = observer) {
        current->serviceChanged(changed);
    }
}

void VehicleClientImpl::statusReported(int property, VehiclePropertyStatus status) {
    {
        const sync::MutexLock state(stateMutex);
        if (status == VEHICLE_PROPERTY_STATUS_TIMEOUT) {
            timedOut.insert(property);
        } else {
            timedOut.erase(property);
        }
    }
    if (VehicleObserver* const current = observer) {
        current->statusReported(property, status);
    }
}

void VehicleClientImpl::reverseLineRead(int property, int number, long time) {
    if (VehicleObserver* const current = observer) {
        PropertyState state;
        state.property = property;
        state.type = PROPERTY_TYPE_INT32;
        state.payload = number;
        state.reception = Reception::Received;
        state.origin = ValueOrigin::ReverseLine;
        state.timestamp = time;
        current->valueReceived(state);
    }
}

}  // namespace vehicle
}  // namespace platform
}  // namespace qvn
