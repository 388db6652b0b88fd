#include <gtest/gtest.h>
#include <vehicle/PropertyIds.h>
#include <vehicle/VehicleClient.h>
#include <vehicle_testing/TestVehicle.h>

#include <atomic>
#include <vector>

using namespace qvn::platform::vehicle;

// The application: a screen that is open while reverse is selected, shows the speed, and asks for the model of the car.
struct ParkingScreen {
    static std::atomic<bool> open;
    static std::atomic<bool> speedIsKnown;
    static std::atomic<float> speed;

    static void start() {
        VehicleClient::getInstance()->subscribe(changed, {ids::BCM8_PASWorkCmd, ids::ESP_FD2_VehSpd}, status);
    }

private:
    static void changed(VehiclePropValue value, PropertyType) {
        if (value.timestamp == 0) {
            return;  // a message is back, and repeats a property that has had no value yet
        }
        if (value.prop == ids::ESP_FD2_VehSpd) {
            speed = value.value.floatValues[0];
            speedIsKnown = true;
        } else if (value.prop == ids::BCM8_PASWorkCmd) {
            open = value.value.int32Values[0] == 1;
            std::vector<int> show{open ? 1 : 0};
            VehicleClient::getInstance()->setInt32Property(ids::HUT6_CarMdlDispCmd, show);
        }
    }
    static void status(int property, VehiclePropertyStatus state) {
        if (property == ids::ESP_FD2_VehSpd && state == VEHICLE_PROPERTY_STATUS_TIMEOUT) {
            speedIsKnown = false;
        }
    }
};

std::atomic<bool> ParkingScreen::open{false};
std::atomic<bool> ParkingScreen::speedIsKnown{false};
std::atomic<float> ParkingScreen::speed{0};

class ParkingScreenTest : public testing::Test {
protected:
    qvn::testing::TestVehicle vehicle;
};

TEST_F(ParkingScreenTest, OpensAndAsksForTheModel) {
    ParkingScreen::start();
    vehicle.set("BCM8_PASWorkCmd", 1);
    vehicle.settle();
    EXPECT_TRUE(ParkingScreen::open);
    EXPECT_EQ(1, vehicle.lastSet("HUT6_CarMdlDispCmd"));
}

TEST_F(ParkingScreenTest, ShowsNoSpeedThatIsNotReceived) {
    ParkingScreen::start();
    vehicle.set("ESP_FD2_VehSpd", 4.5);
    vehicle.settle();
    EXPECT_EQ(4.5f, ParkingScreen::speed);
    vehicle.timeOut("ESP_FD2");
    vehicle.settle();
    EXPECT_FALSE(ParkingScreen::speedIsKnown);
    vehicle.recover("ESP_FD2");  // the client repeats the last value
    vehicle.settle();
    EXPECT_TRUE(ParkingScreen::speedIsKnown);
}

TEST_F(ParkingScreenTest, OpensByTheReverseLineBeforeThereIsAService) {
    vehicle.serviceDown();
    ParkingScreen::start();
    vehicle.reverse(true);
    vehicle.settle();
    EXPECT_TRUE(ParkingScreen::open);
}
