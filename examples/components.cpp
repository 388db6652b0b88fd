#include <vehicle/PropertyIds.h>
#include <vehicle/VehicleSession.h>

#include <cstdio>

using namespace qvn::platform::vehicle;

/// Shows the speed, ten times a second at most, and says when it is not the present one.
class SpeedDisplay {
    VehicleSession mVehicle;
    Subscription mSpeed = mVehicle.subscribe(
        {ids::ESP_FD2_VehSpd},
        [](const PropertyState& speed) {
            std::printf("speed %.1f km/h%s\n", speed.number(), speed.isCurrent() ? "" : ", some time ago");
        },
        SubscribeOptions().atMost(10).changesOnly());
};

/// Has the vehicle show its model while reverse is selected, and knows whether it does.
class ParkingView {
    VehicleSession mVehicle;
    Subscription mReverse = mVehicle.subscribe({ids::BCM8_PASWorkCmd}, [this](const PropertyState& command) {
        if (command.isCurrent()) {
            const int show = command.integer();
            mVehicle.setAndAwait(
                ids::HUT6_CarMdlDispCmd, show, ids::HAP_FD2_CarMdlDispSts, show, std::chrono::seconds(2),
                [](const SetOutcome& set) { std::printf("model: %s\n", set ? "shown" : set.text.c_str()); });
        }
    });
    Subscription mService = mVehicle.subscribeService([](const ServiceState& service) {
        std::printf("CAN service %s\n", service.presence == ServicePresence::There ? "there" : "not there");
    });
};

int main() {
    const SpeedDisplay display;
    const ParkingView view;
    return std::getchar() == EOF;
}
