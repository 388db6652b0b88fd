#ifndef VEHICLE_VEHICLE_PROPERTY_H
#define VEHICLE_VEHICLE_PROPERTY_H

#include <cstdint>
#include <string>
#include <vector>

#if defined(__GNUC__)
#define QVN_VEHICLE_API __attribute__((visibility("default")))
#else
#define QVN_VEHICLE_API
#endif

static_assert(sizeof(long) == 8, "64-bit property values and timestamps are carried in a long");

namespace qvn {
namespace platform {
namespace vehicle {

/// Identifier of a vehicle property, always compared as a whole 32-bit value. Its bits are, from the top:
/// group (28-31), area kind (24-27, 1 = global), value type (16-23, 0x40 integer, 0x60 float, 0x00 none given) and
/// index within the group (0-15). The type bits are informative only; how a value is stored is told by PropertyType.
enum VehicleProperty : std::int32_t {};

/// Tells which member of VehiclePropValue::RawValue carries the payload of a property.
enum PropertyType : std::int32_t {
    PROPERTY_TYPE_BOOLEAN = 2,  ///< bytes[0]
    PROPERTY_TYPE_INT32 = 3,    ///< int32Values[0]
    PROPERTY_TYPE_INT64 = 4,    ///< int64Values[0]
    PROPERTY_TYPE_FLOAT = 5,    ///< floatValues[0]
    PROPERTY_TYPE_BYTES = 6,    ///< bytes[0]
    PROPERTY_TYPE_UNKNOWN = 7,  ///< the identifier is not served by this client
};

/// Reception state of the CAN message that carries a property.
enum VehiclePropertyStatus : std::int32_t {
    VEHICLE_PROPERTY_STATUS_AVAILABLE = 0,  ///< received, or received again after a time-out
    VEHICLE_PROPERTY_STATUS_TIMEOUT = 2,    ///< no longer received
};

/// One property value. Copying it copies all five payload members.
struct VehiclePropValue {
    /// The payload. PropertyType says which member is filled; the first element is the value, and a steering-wheel
    /// switch adds the switch's direction code as a second one.
    struct RawValue {
        std::vector<int> int32Values;
        std::vector<float> floatValues;
        std::vector<long> int64Values;
        std::vector<unsigned char> bytes;
        std::string stringValue;
    };

    long timestamp = 0;       ///< CLOCK_MONOTONIC in ns when the value was dispatched; 0: never, or clock unreadable
    std::int32_t areaId = 0;  ///< 0x01000000 (global); 0 in values that the reverse line makes
    std::int32_t prop = 0;    ///< the VehicleProperty identifier
    std::int32_t status = 0;  ///< a VehiclePropertyStatus; always 0 today, time-outs arrive by the status callback
    RawValue value;
};

/// Receives a property value. A plain function: it has no context argument. See VehicleClient::subscribe for the
/// threads it runs on and what it may call.
using PropertyChangedCallback = void (*)(VehiclePropValue, PropertyType);

/// Receives the reception state of one property's CAN message (property identifier, state). It never reports the
/// outcome of a set.
using SetErrorCallback = void (*)(int, VehiclePropertyStatus);

}  // namespace vehicle
}  // namespace platform
}  // namespace qvn

/// The head-unit function that a client instance serves.
enum FUNCTION_TYPE : std::int32_t {
    FUNCTION_TYPE_AVM = 0,   ///< around-view monitor, also the fallback
    FUNCTION_TYPE_RVC = 1,   ///< rear-view camera
    FUNCTION_TYPE_HAP = 2,   ///< automatic parking
    FUNCTION_TYPE_DMS = 3,   ///< driver monitoring
    FUNCTION_TYPE_OMS = 4,   ///< occupant monitoring
    FUNCTION_TYPE_NONE = 5,  ///< not chosen yet
};

/// One row of a function signal table: a CAN signal and the property that it feeds, or is fed by.
struct VehilceClientInfo {
    std::uint32_t codeId;       ///< signal, as numbered by the CAN service's schema
    std::int32_t direction;     ///< row enable: decoding and sets use the row while the low byte is non-zero
    std::int32_t propertyType;  ///< qvn::platform::vehicle::PropertyType of the property until a value arrives
    std::uint32_t areaId;
    std::int32_t status;     ///< qvn::platform::vehicle::VehiclePropertyStatus
    std::uint32_t property;  ///< qvn::platform::vehicle::VehicleProperty
};

/// A property value together with the type that tells how to read it.
struct VehicleClientProperty {
    qvn::platform::vehicle::VehiclePropValue propValue;
    qvn::platform::vehicle::PropertyType propertyType{};
};

#endif  // VEHICLE_VEHICLE_PROPERTY_H
