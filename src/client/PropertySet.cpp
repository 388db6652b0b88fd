#include "canservice/FdbusServiceManager.h"
#include "client/VehicleClientImpl.h"
#include "log/Log.h"

namespace qvn {
namespace platform {
namespace vehicle {

namespace {

template <class T>
bool isGiven(int property, const std::vector<T>& values) {
    if (values.empty()) {
        QVN_LOG(Error, "[%s][%d]no value given, set of property:%d refused!", property);
        return false;
    }
    return true;
}

}  // namespace

template <class T>
bool VehicleClientImpl::send(int property, T value) {
    if (!serviceManager) {
        QVN_LOG(Error, "[%s][%d]vehicle client is not initialized, set of property:%d refused!", property);
        return false;
    }
    return serviceManager->signalFeedback(static_cast<VehicleProperty>(property), value);
}

template <class T>
bool VehicleClientImpl::sendFirst(int property, const std::vector<T>& values) {
    return isGiven(property, values) && send(property, values[0]);
}

template <class Sent, class Given>
bool VehicleClientImpl::offerFirst(int property, const std::vector<Given>& values) {
    if (!isGiven(property, values)) {
        return false;
    }
    send<Sent>(property, values[0]);
    return true;
}

std::vector<PropertyType> VehicleClientImpl::cachedTypes(int property) {
    std::vector<PropertyType> types;
    const sync::MutexLock state(stateMutex);
    for (const VehicleClientProperty& record : propertyCache) {
        if (record.propValue.prop == property) {
            types.push_back(record.propertyType);
        }
    }
    return types;
}

bool VehicleClientImpl::setPropValue(int property, VehiclePropValue* value) {
    const std::vector<PropertyType> types = cachedTypes(property);
    if (types.empty()) {
        return false;
    }
    if (value == nullptr) {
        QVN_LOG(Error, "[%s][%d]no value given, set of property:%d refused!", property);
        return false;
    }

    // Every record of the property sends once, and the result tells only that there is one.
    const VehiclePropValue::RawValue& raw = value->value;
    for (const PropertyType type : types) {
        bool given = true;
        switch (type) {
            case PROPERTY_TYPE_BOOLEAN:
                given = offerFirst<int>(property, raw.bytes);
                break;
            case PROPERTY_TYPE_INT32:
                given = offerFirst<int>(property, raw.int32Values);
                break;
            case PROPERTY_TYPE_INT64:
                given = offerFirst<long>(property, raw.int64Values);
                break;
            case PROPERTY_TYPE_FLOAT:
                given = offerFirst<float>(property, raw.floatValues);
                break;
            case PROPERTY_TYPE_BYTES:
                given = offerFirst<unsigned char>(property, raw.bytes);
                break;
            case PROPERTY_TYPE_UNKNOWN:
                break;
        }
        if (!given) {
            return false;
        }
    }
    return true;
}

bool VehicleClientImpl::setBoolProperty(int property, bool& value) {
    // Booleans go out through the float conversion; the bytes are the same.
    return send(property, value ? 1.0f : 0.0f);
}

bool VehicleClientImpl::setInt32Property(int property, std::vector<int>& value) {
    return sendFirst(property, value);
}

bool VehicleClientImpl::setInt64Property(int property, std::vector<long>& value) {
    return sendFirst(property, value);
}

bool VehicleClientImpl::setFloatProperty(int property, std::vector<float>& value) {
    return sendFirst(property, value);
}

bool VehicleClientImpl::setByteProperty(int property, std::vector<unsigned char>& value) {
    return sendFirst(property, value);
}

bool VehicleClientImpl::setStringProperty(int, std::string&) {
    return false;
}

}  // namespace vehicle
}  // namespace platform
}  // namespace qvn
