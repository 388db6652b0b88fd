#include <vehicle/PropertyIds.h>
#include <vehicle/VehicleSession.h>

#include <cstdio>

using namespace qvn::platform::vehicle;

void print(const PropertyState& state) {
    if (state.isCurrent()) {
        std::printf("%s = %g\n", propertyName(state.property), state.number());
    } else {
        std::printf("%s is %s\n", propertyName(state.property), receptionText(state.reception));
    }
}

int main() {
    VehicleSession session;
    const Subscription values = session.subscribe({ids::DCT5_TGS_LEVER, ids::BCM1_DrvDoorSts, ids::ESP_FD2_VehSpd},
                                                  print, SubscribeOptions().changesOnly());
    return std::getchar() == EOF;
}
