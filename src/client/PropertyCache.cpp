#include "client/CoreLocks.h"
#include "client/VehicleClientImpl.h"

namespace qvn {
namespace platform {
namespace vehicle {

using RawValue = VehiclePropValue::RawValue;

template <class Payload>
bool VehicleClientImpl::readPayload(int property, Payload RawValue::*payload, Payload& out) {
    const CacheLock lock(*this);
    const sync::MutexLock state(stateMutex);
    if (subscribedIds.empty()) {
        return false;
    }
    for (const VehicleClientProperty& record : propertyCache) {
        const Payload& values = record.propValue.value.*payload;
        if (record.propValue.prop == property && !values.empty()) {
            out = values;
            return true;
        }
    }
    return false;
}

bool VehicleClientImpl::getPropValue(int property, VehiclePropValue* out) {
    const CacheLock lock(*this);
    const sync::MutexLock state(stateMutex);
    for (const VehicleClientProperty& record : propertyCache) {
        if (record.propValue.prop == property) {
            *out = record.propValue;
            return true;
        }
    }
    return false;
}

PropertyType VehicleClientImpl::getPropertyType(int property) {
    const CacheLock lock(*this);
    const sync::MutexLock state(stateMutex);
    for (const VehicleClientProperty& record : propertyCache) {
        if (record.propValue.prop == property) {
            return record.propertyType;
        }
    }
    return PROPERTY_TYPE_UNKNOWN;
}

bool VehicleClientImpl::getBoolProperty(int property, bool& out) {
    std::vector<int> values;
    if (!getInt32Property(property, values)) {
        return false;
    }
    out = values[0] != 0;
    return true;
}

bool VehicleClientImpl::getInt32Property(int property, std::vector<int>& out) {
    return readPayload(property, &RawValue::int32Values, out);
}

bool VehicleClientImpl::getInt64Property(int property, std::vector<long>& out) {
    return readPayload(property, &RawValue::int64Values, out);
}

bool VehicleClientImpl::getFloatProperty(int property, std::vector<float>& out) {
    return readPayload(property, &RawValue::floatValues, out);
}

bool VehicleClientImpl::getByteProperty(int property, std::vector<unsigned char>& out) {
    return readPayload(property, &RawValue::bytes, out);
}

bool VehicleClientImpl::getStringProperty(int property, std::string& out) {
    return readPayload(property, &RawValue::stringValue, out);
}

}  // namespace vehicle
}  // namespace platform
}  // namespace qvn
