#include <gtest/gtest.h>
#include <vehicle/PropertyIds.h>
#include <vehicle/VehicleSession.h>
#include <vehicle_testing/TestVehicle.h>

#include <atomic>

using namespace qvn::platform::vehicle;

// The application: a screen that is open while reverse is selected, shows the speed, and asks for the model of the car.
class ParkingScreen {
public:
    std::atomic<bool> open{false};
    std::atomic<double> speed{-1};  // km/h; negative while it is not known

private:
    VehicleSession mVehicle;
    Subscription mCommand = mVehicle.subscribe({ids::BCM8_PASWorkCmd}, [this](const PropertyState& command) {
        open = command.integer() == 1;
        mVehicle.set(ids::HUT6_CarMdlDispCmd, open ? 1 : 0);
    });
    Subscription mSpeed = mVehicle.subscribe(
        {ids::ESP_FD2_VehSpd}, [this](const PropertyState& state) { speed = state.isCurrent() ? state.number() : -1; });
};

class ParkingScreenTest : public testing::Test {
protected:
    qvn::testing::TestVehicle vehicle;
};

TEST_F(ParkingScreenTest, OpensAndAsksForTheModel) {
    const ParkingScreen screen;
    vehicle.settle();
    vehicle.set("BCM8_PASWorkCmd", 1);
    vehicle.settle();
    EXPECT_TRUE(screen.open);
    EXPECT_EQ(1, vehicle.lastSet("HUT6_CarMdlDispCmd"));
}

TEST_F(ParkingScreenTest, ShowsNoSpeedThatIsNotReceived) {
    const ParkingScreen screen;
    vehicle.set("ESP_FD2_VehSpd", 4.5);
    vehicle.settle();
    EXPECT_EQ(4.5, screen.speed);
    vehicle.timeOut("ESP_FD2");
    vehicle.settle();
    EXPECT_GT(0, screen.speed);
    vehicle.recover("ESP_FD2");
    vehicle.settle();
    EXPECT_EQ(4.5, screen.speed);
    vehicle.serviceDown();
    vehicle.settle();
    EXPECT_GT(0, screen.speed);
}

TEST_F(ParkingScreenTest, OpensByTheReverseLineBeforeThereIsAService) {
    vehicle.serviceDown();
    const ParkingScreen screen;
    vehicle.reverse(true);
    vehicle.settle();
    EXPECT_TRUE(screen.open);
}
