#include <vehicle/PropertyIds.h>
#include <vehicle/VehicleClient.h>

#include <cstdio>

using namespace qvn::platform::vehicle;

void changed(VehiclePropValue value, PropertyType type) {
    if (value.timestamp == 0) {
        return;  // its message is back from a time-out, but it was never received itself
    }
    const double number = type == PROPERTY_TYPE_FLOAT ? value.value.floatValues[0] : value.value.int32Values[0];
    std::printf("%s = %g\n", propertyName(value.prop), number);
}

void status(int property, VehiclePropertyStatus state) {
    std::printf("%s is %s\n", propertyName(property), state == VEHICLE_PROPERTY_STATUS_TIMEOUT ? "timed out" : "back");
}

int main() {
    VehicleClient::getInstance()->subscribe(changed, {ids::DCT5_TGS_LEVER, ids::BCM1_DrvDoorSts, ids::ESP_FD2_VehSpd},
                                            status);
    return std::getchar() == EOF;
}
