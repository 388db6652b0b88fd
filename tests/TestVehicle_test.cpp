#include <common_base/fdbus.h>
#include <gtest/gtest.h>
#include <vehicle/PropertyIds.h>
#include <vehicle/VehicleClient.h>
#include <vehicle/VehicleSession.h>
#include <vehicle_testing/TestVehicle.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <future>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "ipc_common_soc/CanServiceWire.h"

namespace qvn::test {
namespace {

using namespace platform::vehicle;
using ::qvn::testing::TestVehicle;

/// What the application under test was told. It answers every new transparency of the car model with a set.
class Application {
public:
    static void changed(VehiclePropValue value, PropertyType type) {
        if (value.timestamp == 0) {
            return;  // a message is back, and repeats a property that has had no value yet
        }
        if (value.prop == ids::HAP_FD2_CarMdlTrsprcySts) {
            VehicleClient::getInstance()->setInt32Property(ids::HUT6_CarMdlDispCmd, value.value.int32Values);
        }
        std::this_thread::sleep_for(slowness.load());
        const double number =
            type == PROPERTY_TYPE_FLOAT ? static_cast<double>(value.value.floatValues[0]) : value.value.int32Values[0];
        const std::lock_guard<std::mutex> lock(mutex);
        values.push_back(number);
    }
    static void status(int property, VehiclePropertyStatus state) {
        const std::lock_guard<std::mutex> lock(mutex);
        if (property == ids::HAP_FD3_SDWActiveSts) {
            states.push_back(state);
        }
    }
    static void start(const std::vector<int>& properties) {
        VehicleClient::getInstance()->subscribe(changed, properties, status);
        takeValues();  // the reverse line's level
    }
    static std::vector<double> takeValues() {
        const std::lock_guard<std::mutex> lock(mutex);
        return std::exchange(values, {});
    }
    static std::vector<VehiclePropertyStatus> takeStates() {
        const std::lock_guard<std::mutex> lock(mutex);
        return std::exchange(states, {});
    }

    /// How long a callback takes: what does not wait for it is seen.
    static std::atomic<std::chrono::milliseconds> slowness;

private:
    static std::mutex mutex;
    static std::vector<double> values;
    static std::vector<VehiclePropertyStatus> states;
};

std::atomic<std::chrono::milliseconds> Application::slowness{std::chrono::milliseconds(0)};
std::vector<double> Application::values;
std::vector<VehiclePropertyStatus> Application::states;
std::mutex Application::mutex;

using Values = std::vector<double>;
using States = std::vector<VehiclePropertyStatus>;

template <class Call>
std::string errorOf(Call call) {
    try {
        call();
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "no error";
}

TEST(TestVehicle, SettleReturnsWhenTheApplicationHasSeenEveryValueInOrder) {
    TestVehicle vehicle;
    Application::start({ids::ESP_FD2_VehSpd, ids::DCT5_TGS_LEVER});
    vehicle.set("ESP_FD2_VehSpd", 4.5);
    vehicle.settle();
    EXPECT_EQ(Values{4.5}, Application::takeValues()) << "once, whether the client had connected or not";

    Values sent;
    for (int round = 0; round < 20; ++round) {
        for (int value = 0; value < 100; ++value) {
            vehicle.set("DCT5_TGS_LEVER", value);
            sent.push_back(value);
        }
        vehicle.settle();
        ASSERT_EQ(sent, Application::takeValues());
        sent.clear();
    }
    vehicle.setRaw("QVN_GET_ESP_FD2_VehSpd", {0x00, 0x00});
    vehicle.settle();
    EXPECT_EQ(Values{0}, Application::takeValues());
}

TEST(TestVehicle, AMessageTimesOutAndRecovers) {
    TestVehicle vehicle;
    Application::start({ids::HAP_FD3_SDWActiveSts});
    vehicle.set("HAP_FD3_SDWActiveSts", 3);
    vehicle.timeOut("HAP_FD3");
    vehicle.settle();
    EXPECT_EQ(States{VEHICLE_PROPERTY_STATUS_TIMEOUT}, Application::takeStates());
    EXPECT_EQ(Values{3}, Application::takeValues());
    vehicle.recover("HAP_FD3");
    vehicle.settle();
    EXPECT_EQ(States{VEHICLE_PROPERTY_STATUS_AVAILABLE}, Application::takeStates());
    EXPECT_EQ(Values{3}, Application::takeValues()) << "repeated";
    vehicle.serviceDown();
    vehicle.timeOut("HAP_FD3");
    vehicle.serviceUp();
    vehicle.settle();
    EXPECT_EQ(States{VEHICLE_PROPERTY_STATUS_TIMEOUT}, Application::takeStates()) << "kept while there was no service";
}

TEST(TestVehicle, TheReverseLineIsHeardUntilTheServiceIsReached) {
    TestVehicle vehicle;
    vehicle.serviceDown();
    Application::start({ids::BCM8_PASWorkCmd});
    Application::slowness = std::chrono::milliseconds(20);
    for (const bool engaged : {true, false, true, false, true}) {
        vehicle.reverse(engaged);
        vehicle.settle();
        ASSERT_EQ(Values{engaged ? 1.0 : 0.0}, Application::takeValues());
    }
    vehicle.serviceUp();
    vehicle.settle();
    vehicle.reverse(false);
    vehicle.settle();
    EXPECT_EQ(Values{}, Application::takeValues());
}

TEST(TestVehicle, SetsOfTheApplicationAreSeen) {
    TestVehicle vehicle;
    Application::start({ids::HAP_FD2_CarMdlTrsprcySts});
    vehicle.settle();
    EXPECT_EQ(std::nullopt, vehicle.lastSet("HUT6_CarMdlDispCmd"));
    EXPECT_EQ(std::nullopt, vehicle.waitForSet("HUT6_CarMdlDispCmd", TestVehicle::Duration(1)));
    for (int value = 1; value <= 50; ++value) {
        vehicle.set("HAP_FD2_CarMdlTrsprcySts", value);
        vehicle.settle();
        ASSERT_EQ(value, vehicle.lastSet("HUT6_CarMdlDispCmd")) << "set by the application, inside its callback";
    }
    for (int value = 1; value <= 50; ++value) {
        ASSERT_EQ(value, vehicle.waitForSet("HUT6_CarMdlDispCmd"));
    }
}

TEST(TestVehicle, TheServiceGoesDownAndComesBackWithTheValuesOfThen) {
    TestVehicle vehicle;
    Application::start({ids::ESP_FD2_VehSpd});
    Application::slowness = std::chrono::milliseconds(20);
    vehicle.settle();
    for (int round = 1; round <= 5; ++round) {
        vehicle.set("ESP_FD2_VehSpd", 4.5);
        vehicle.serviceDown();
        EXPECT_EQ(Values{4.5}, Application::takeValues()) << "what was sent before has arrived";
        vehicle.set("ESP_FD2_VehSpd", round * 9.0);
        vehicle.settle();
        EXPECT_EQ(Values{}, Application::takeValues());
        vehicle.serviceUp();
        vehicle.settle();
        ASSERT_EQ(Values{round * 9.0}, Application::takeValues());
    }
}

TEST(TestVehicle, SettleCoversASetThatWasMadeBeforeTheClientHadConnected) {
    TestVehicle vehicle;
    const auto set = [](int number) {
        std::vector<int> value{number};
        EXPECT_TRUE(VehicleClient::getInstance()->setInt32Property(ids::HUT6_CarMdlDispCmd, value));
    };
    set(1);
    vehicle.settle(std::chrono::hours::max());
    EXPECT_EQ(1, vehicle.lastSet("HUT6_CarMdlDispCmd"));
    for (int round = 2; round < 12; ++round) {
        vehicle.serviceDown();
        vehicle.serviceUp();
        set(round);
        vehicle.settle(TestVehicle::Duration::max());
        ASSERT_EQ(round, vehicle.lastSet("HUT6_CarMdlDispCmd"));
    }
    EXPECT_EQ(1, vehicle.waitForSet("HUT6_CarMdlDispCmd", std::chrono::hours::max()));
    EXPECT_EQ(2, vehicle.waitForSet("HUT6_CarMdlDispCmd", std::chrono::hours::min()));
}

TEST(TestVehicle, SettleCoversTheHandlersOfSessionsAndWhatTheySet) {
    TestVehicle vehicle;
    VehicleSession session;
    std::vector<double> speeds;
    std::atomic<ServicePresence> service{ServicePresence::NeverThere};
    const Subscription speed = session.subscribe(
        {ids::ESP_FD2_VehSpd},
        [&](const PropertyState& state) {
            speeds.push_back(state.number());
            session.set(ids::HUT6_CarMdlDispCmd, state.integer());
        },
        SubscribeOptions().atMost(100).changesOnly());
    const Subscription presence =
        session.subscribeService([&](const ServiceState& state) { service = state.presence; });
    vehicle.set("ESP_FD2_VehSpd", 4.5);
    vehicle.settle();
    vehicle.set("ESP_FD2_VehSpd", 9);  // held back, so that it comes after the time of this
    vehicle.settle();
    EXPECT_EQ(speeds, (std::vector<double>{4.5, 9}));
    EXPECT_EQ(vehicle.lastSet("HUT6_CarMdlDispCmd"), 9);
    EXPECT_EQ(service, ServicePresence::There);
    vehicle.serviceDown();
    vehicle.settle();
    EXPECT_EQ(service, ServicePresence::Gone);
    EXPECT_EQ(session.state(ids::ESP_FD2_VehSpd).reception, Reception::ServiceAway);
    vehicle.serviceUp();
    vehicle.settle();
    EXPECT_EQ(service, ServicePresence::There);
    EXPECT_TRUE(session.state(ids::ESP_FD2_VehSpd).isCurrent());

    static std::mutex gate;
    const Subscription hanging = session.subscribe(
        {ids::DCT5_TGS_LEVER}, [&](const PropertyState&) { const std::lock_guard<std::mutex> lock(gate); });
    std::unique_lock<std::mutex> held(gate);
    vehicle.set("DCT5_TGS_LEVER", 1);
    EXPECT_EQ(errorOf([&] { vehicle.settle(TestVehicle::Duration(100)); }),
              "a session's handler for DCT5_TGS_LEVER has not returned after 100 ms; look for what it waits for");
    held.unlock();
    vehicle.settle();
}

TEST(TestVehicle, MustBeMadeBeforeTheClient) {
    VehicleClient::getInstance();
    EXPECT_NE(std::string::npos, errorOf([] { TestVehicle(); }).find("make the TestVehicle first"));
}

TEST(TestVehicle, TheDevelopersOwnSettingsStayOutside) {
    const std::string log = ::testing::TempDir() + "developers.log";
    std::filesystem::remove(log);
    for (const auto& [name, value] :
         {std::pair<const char*, std::string>("QVN_HOST_CONFIG", "/nonexistent/vehicle.json"),
          {"QVN_HOST_QUEUE_MIB", "1"},
          {"QVN_LOG_LEVEL", "5"},
          {"QVN_LOG_FILE", log}}) {
        ::setenv(name, value.c_str(), 1);
    }
    TestVehicle vehicle;
    Application::start({ids::ESP_FD2_VehSpd});
    vehicle.set("ESP_FD2_VehSpd", 4.5);
    vehicle.settle();
    EXPECT_EQ(Values{4.5}, Application::takeValues());
    EXPECT_FALSE(std::filesystem::exists(log));
    EXPECT_EQ(nullptr, std::getenv("QVN_LOG_LEVEL"));
    EXPECT_EQ(nullptr, std::getenv("QVN_HOST_QUEUE_MIB"));
}

TEST(TestVehicle, ACallbackThatHangsIsNamed) {
    static std::mutex gate;
    TestVehicle vehicle;
    const auto hanging = [&](const std::function<void()>& put) {
        std::unique_lock<std::mutex> held(gate);
        put();
        const std::string error = errorOf([&] { vehicle.settle(TestVehicle::Duration(300)); });
        held.unlock();
        vehicle.settle();
        return error;
    };
    const std::string end = " has not returned after 300 ms; look for what it waits for";
    vehicle.serviceDown();
    VehicleClient::getInstance()->subscribe(
        [](VehiclePropValue value, PropertyType) {
            if (value.prop != ids::ESP_FD2_VehSpd) {
                const std::lock_guard<std::mutex> lock(gate);
            }
        },
        {ids::DCT5_TGS_LEVER, ids::ESP_FD2_VehSpd, ids::BCM8_PASWorkCmd},
        [](int, VehiclePropertyStatus) { const std::lock_guard<std::mutex> lock(gate); });
    EXPECT_EQ("`changed` for the reverse line" + end, hanging([&] { vehicle.reverse(true); }));
    vehicle.set("DCT5_TGS_LEVER", 1);
    EXPECT_EQ("`changed` or `status` for DCT5_TGS_LEVER" + end, hanging([&] { vehicle.serviceUp(); }));
    EXPECT_EQ("`changed` for DCT5_TGS_LEVER" + end, hanging([&] {
                  vehicle.set("ESP_FD2_VehSpd", 4.5);
                  vehicle.set("DCT5_TGS_LEVER", 2);
                  vehicle.set("ESP_FD2_VehSpd", 9);
              }));
    EXPECT_EQ("`status` for HAP_FD3" + end, hanging([&] { vehicle.timeOut("HAP_FD3"); }));
    EXPECT_EQ("`status` or `changed` for HAP_FD3" + end, hanging([&] { vehicle.recover("HAP_FD3"); }));
}

TEST(TestVehicle, SaysWhatHangsBeforeTheTimeOfTheTestIsOver) {
    static std::promise<void> release;
    ::setenv("QVN_TEST_TIMEOUT", "1", 1);
    ::testing::internal::CaptureStderr();
    const auto watched = std::chrono::steady_clock::now() + std::chrono::milliseconds(800);
    TestVehicle vehicle;
    VehicleClient::getInstance()->subscribe(
        [](VehiclePropValue value, PropertyType) {
            if (value.prop == ids::DCT5_TGS_LEVER) {
                release.get_future().wait();
            }
        },
        {ids::DCT5_TGS_LEVER}, nullptr);
    vehicle.settle();
    vehicle.set("DCT5_TGS_LEVER", 2);
    const bool inTime = std::chrono::steady_clock::now() < watched;
    EXPECT_THROW(vehicle.settle(TestVehicle::Duration(2000)), std::runtime_error);
    const std::string said = ::testing::internal::GetCapturedStderr();
    EXPECT_NE(std::string::npos, said.find("TestVehicle: the test has not ended after 0.8 s; ")) << said;
    EXPECT_TRUE(!inTime || said.find("`changed` for DCT5_TGS_LEVER has not returned") != std::string::npos) << said;
    release.set_value();
    vehicle.settle();
}

/// A client that comes and goes, and keeps what it is told of DCT5_TGS_LEVER.
class BareClient : public CBaseClient {
public:
    BareClient(CBaseWorker* worker, int otherCodes) : CBaseClient("bare", worker), mOtherCodes(otherCodes) {
        connect("svc://fdbus_can_service");
    }
    ~BareClient() override { prepareDestroy(); }

    std::vector<int> values() {
        const std::lock_guard<std::mutex> lock(mMutex);
        return mValues;
    }

protected:
    void onOnline(FdbSessionId_t, bool) override {
        CFdbMsgSubscribeList list;
        addNotifyItem(list, can_service::QVN_GET_DCT5_TGS_LEVER, nullptr);
        for (int code = 1; code <= mOtherCodes; ++code) {
            addNotifyItem(list, code, nullptr);
        }
        subscribe(list);
    }
    void onBroadcast(CBaseJob::Ptr& job) override {
        can_service::BroadcastSignal signal;
        wire::read(*castToMessage<CFdbMessage*>(job), signal);
        const std::lock_guard<std::mutex> lock(mMutex);
        mValues.push_back(static_cast<unsigned char>(signal.raw_value()[0]));
    }

private:
    const int mOtherCodes;
    std::mutex mMutex;
    std::vector<int> mValues;
};

TEST(TestVehicle, AClientThatComesIsToldEachValueOnceAndOneThatLeavesIsNotWaitedFor) {
    TestVehicle vehicle;
    CBaseWorker worker;
    worker.start();
    for (int round = 0; round < 60; ++round) {
        BareClient client(&worker, round * 20);  // a value may fall into the time that a long list takes
        for (int value = 0; value < 100; ++value) {
            vehicle.set("DCT5_TGS_LEVER", value);
        }
        vehicle.settle();
        const std::vector<int> values = client.values();
        ASSERT_EQ(values.end(), std::adjacent_find(values.begin(), values.end()));
        ASSERT_EQ(99, values.back());
    }
    worker.exit();
    worker.join();
}

TEST(TestVehicle, SaysWhatIsWrong) {
    std::optional<TestVehicle> vehicle(std::in_place);
    const std::filesystem::path directory = std::getenv("QVN_HOST_DIR");
    EXPECT_EQ("unknown received signal 'ESP_FD2_VehSpeed'; did you mean ESP_FD2_VehSpd or ESP_FD2_VehSpdVld?",
              errorOf([&] { vehicle->set("ESP_FD2_VehSpeed", 1); }));
    EXPECT_EQ("signal DCT5_TGS_LEVER: value 256 does not fit; expected a whole number from 0 to 255",
              errorOf([&] { vehicle->set("DCT5_TGS_LEVER", 256); }));
    EXPECT_EQ("unknown message 'HAP_FD33'; did you mean HAP_FD3, HAP_FD1 or HAP_FD2?",
              errorOf([&] { vehicle->timeOut("HAP_FD33"); }));
    EXPECT_EQ("signal ESP_FD2_VehSpd: 20971520 bytes are more than the bus carries; expected at most 15728640",
              errorOf([&] { vehicle->setRaw("ESP_FD2_VehSpd", std::vector<std::uint8_t>(20 << 20)); }));
    EXPECT_EQ("unknown settable signal 'ESP_FD2_VehSpd'", errorOf([&] { vehicle->lastSet("ESP_FD2_VehSpd"); }));
    EXPECT_EQ(0u,
              errorOf([&] { vehicle->settle(TestVehicle::Duration(10)); }).find("no client has connected after 10 ms"));
    vehicle.reset();
    EXPECT_FALSE(std::filesystem::exists(directory));
    EXPECT_EQ(0u, errorOf([] { TestVehicle(); }).find("there was a TestVehicle in this process already"));
}

}  // namespace
}  // namespace qvn::test
