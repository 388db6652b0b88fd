#include <vehicle/VehicleClient.h>
#include <cstdio>
using namespace qvn::platform::vehicle;
void changed(VehiclePropValue v, PropertyType) {
    std::printf("property 0x%08X is %d\n", v.prop, v.value.int32Values[0]);
}
int main() {
    VehicleClient::getInstance()->subscribe(changed, {0x21400E20, 0x21402622}, nullptr);  // driver's door, gear lever
    return std::getchar() == EOF;
}
