#include <chrono>
#include <future>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "support/CoreTest.h"
#include "support/FakeClock.h"

namespace {

using namespace qvn::test;
using namespace qvn::platform::vehicle;

constexpr int kDriverDoor = 0x21400E20;
constexpr int kPassengerDoor = 0x21400E21;
constexpr int kSwitches = 0x11410A10;
constexpr int kParkingWork = 0x2140307A;
constexpr int kPowerMode = 0x21403837;

class SubscriptionTest : public CoreTest {
protected:
    SubscriptionTest() { startCore(); }

    std::vector<int> delivered() {
        std::vector<int> numbers;
        for (const Change& change : Application::changes.entries()) {
            numbers.push_back(change.value.value.int32Values.at(0));
        }
        return numbers;
    }
};

/// Numbers of values, as an observer is told them.
struct Observer : VehicleObserver {
    void valueReceived(const PropertyState& state) override { numbers.push_back(state.integer()); }
    void statusReported(int, VehiclePropertyStatus) override {}
    void serviceChanged(const ServiceState&) override {}
    void observationEnded() override {}
    std::vector<int> numbers;
};

TEST_F(SubscriptionTest, AnObserverIsToldOnlyWhatIsReceivedWhileItObserves) {
    subscribe({kDriverDoor});
    Observer observer;
    core->observe(&observer);
    core->dispatchSingal(intValue(kDriverDoor, 1), PROPERTY_TYPE_INT32);
    Application::onChange = [this](const Change&) { core->observe(nullptr); };
    core->dispatchSingal(intValue(kDriverDoor, 2), PROPERTY_TYPE_INT32);
    Application::onChange = nullptr;
    core->observe(&observer);
    core->dispatchSingal(intValue(kDriverDoor, 3), PROPERTY_TYPE_INT32);
    EXPECT_EQ(observer.numbers, (std::vector<int>{1, 3}));
    core->observe(nullptr);
}

TEST_F(SubscriptionTest, ASubscribedValueIsStampedCachedAndDeliveredOnce) {
    subscribe({kPassengerDoor, kDriverDoor, kDriverDoor});
    VehiclePropValue value = intValue(kDriverDoor, 3);
    value.timestamp = 77;
    value.status = 2;
    {
        const FakeClock clock(2, 5);
        core->dispatchSingal(value, PROPERTY_TYPE_INT32);
    }
    const std::vector<Change> changes = Application::changes.entries();
    ASSERT_EQ(changes.size(), 1u);
    EXPECT_EQ(changes[0].value.timestamp, 2000000005);
    EXPECT_EQ(changes[0].value.prop, kDriverDoor);
    EXPECT_EQ(changes[0].value.areaId, 0x01000000);
    EXPECT_EQ(changes[0].value.status, 2);
    EXPECT_EQ(changes[0].value.value.int32Values, std::vector<int>{3});
    EXPECT_EQ(changes[0].type, PROPERTY_TYPE_INT32);

    VehiclePropValue cached;
    EXPECT_TRUE(core->getPropValue(kDriverDoor, &cached));
    EXPECT_EQ(cached.timestamp, 2000000005);
    EXPECT_EQ(cached.value.int32Values, std::vector<int>{3});
}

TEST_F(SubscriptionTest, WhatIsCachedAndWhatIsDelivered) {
    VehiclePropValue cached;
    core->dispatchSingal(intValue(kDriverDoor, 1), PROPERTY_TYPE_INT32);  // nobody listens
    EXPECT_TRUE(core->getPropValue(kDriverDoor, &cached));
    EXPECT_EQ(cached.value.int32Values, std::vector<int>{1});

    subscribe({kDriverDoor, 0x12345678});
    core->dispatchSingal(intValue(kPassengerDoor, 2), PROPERTY_TYPE_INT32);  // cached, not subscribed
    core->dispatchSingal(intValue(0x12345678, 3), PROPERTY_TYPE_INT32);      // subscribed, not cached
    EXPECT_TRUE(core->getPropValue(kPassengerDoor, &cached));
    EXPECT_EQ(cached.value.int32Values, std::vector<int>{2});
    EXPECT_FALSE(core->getPropValue(0x12345678, &cached));
    EXPECT_EQ(delivered(), std::vector<int>{3});

    subscribe({kPassengerDoor});  // replaces the list
    core->dispatchSingal(intValue(kDriverDoor, 4), PROPERTY_TYPE_INT32);
    core->dispatchSingal(intValue(kPassengerDoor, 5), PROPERTY_TYPE_INT32);
    EXPECT_EQ(delivered(), std::vector<int>{5});

    EXPECT_TRUE(core->subscribe(nullptr, {kDriverDoor}, nullptr));  // cached only
    core->dispatchSingal(intValue(kDriverDoor, 6), PROPERTY_TYPE_INT32);
    EXPECT_EQ(delivered(), std::vector<int>{5});

    subscribe({kDriverDoor});
    EXPECT_TRUE(core->unsubscribe(&Application::changed, {kPassengerDoor}));  // its arguments do not matter
    core->dispatchSingal(intValue(kDriverDoor, 7), PROPERTY_TYPE_INT32);
    EXPECT_TRUE(delivered().empty());
    EXPECT_TRUE(core->getPropValue(kDriverDoor, &cached));
    EXPECT_EQ(cached.value.int32Values, std::vector<int>{7});
}

TEST_F(SubscriptionTest, AValueOfSeveralRecordsUpdatesThemAllAndIsDeliveredOnce) {
    subscribe({kSwitches});
    core->dispatchSingal(intValue(kSwitches, 1), PROPERTY_TYPE_INT32);
    EXPECT_EQ(delivered(), std::vector<int>{1});
    for (std::size_t row = 64; row <= 68; ++row) {
        EXPECT_EQ(core->cache()[row].propValue.value.int32Values, std::vector<int>{1});
    }
}

TEST_F(SubscriptionTest, AClockThatFailsGivesTimestampZeroAndALogLine) {
    subscribe({kDriverDoor});
    log_recorder::reset();
    VehiclePropValue value = intValue(kDriverDoor, 1);
    value.timestamp = 77;
    {
        const FakeClock broken;
        core->dispatchSingal(value, PROPERTY_TYPE_INT32);
    }
    EXPECT_EQ(Application::changes.entries().at(0).value.timestamp, 0);
    EXPECT_EQ(log_recorder::lines(),
              (std::vector<LogLine>{{1, "dispatchSingal", 179, "[%s][%d]get time failed, set default timestamp = [0]!",
                                     "get time failed, set default timestamp = [0]!"}}));
}

TEST_F(SubscriptionTest, ReplayRepeatsTheCachedValueSubscribedOrNot) {
    subscribe({kPassengerDoor});
    core->dispatchSingal(intValue(kDriverDoor, 4), PROPERTY_TYPE_INT32);
    core->availableSignalCallback(static_cast<VehicleProperty>(kDriverDoor));
    core->availableSignalCallback(static_cast<VehicleProperty>(0x12345678));
    const std::vector<Change> changes = Application::changes.entries();
    ASSERT_EQ(changes.size(), 1u);
    EXPECT_EQ(changes[0].value.value.int32Values, std::vector<int>{4});
    EXPECT_NE(changes[0].value.timestamp, 0);

    core->unsubscribe(nullptr, {});
    core->availableSignalCallback(static_cast<VehicleProperty>(kDriverDoor));
    EXPECT_EQ(Application::changes.entries().size(), 1u);
}

TEST_F(SubscriptionTest, AnExceptionOfTheApplicationPassesAndLeavesTheCoreUsable) {
    subscribe({kDriverDoor});
    Application::onChange = [](const Change&) { throw std::runtime_error("application"); };
    EXPECT_THROW(core->dispatchSingal(intValue(kDriverDoor, 1), PROPERTY_TYPE_INT32), std::runtime_error);
    Application::onChange = nullptr;
    core->dispatchSingal(intValue(kDriverDoor, 2), PROPERTY_TYPE_INT32);
    EXPECT_EQ(delivered(), (std::vector<int>{1, 2}));
}

TEST_F(SubscriptionTest, InsideItsCallbackAnApplicationMayCallEverything) {
    subscribe({kDriverDoor});
    Application::onChange = [this](const Change& change) {
        std::vector<int> number = {1};
        EXPECT_TRUE(core->setInt32Property(0x21403033, number));
        EXPECT_TRUE(core->getInt32Property(change.value.prop, number));
        EXPECT_EQ(number, change.value.value.int32Values);
        EXPECT_EQ(core->getPropertyType(change.value.prop), PROPERTY_TYPE_INT32);
        VehiclePropValue value;
        EXPECT_TRUE(core->getPropValue(change.value.prop, &value));
        EXPECT_EQ(value.timestamp, change.value.timestamp);
        EXPECT_TRUE(core->unsubscribe(nullptr, {}));
        EXPECT_FALSE(core->getInt32Property(change.value.prop, number));
        if (change.value.prop == kDriverDoor) {
            // Reports the released reverse line to this very callback before it returns.
            EXPECT_TRUE(core->subscribe(&Application::changed, {kParkingWork}, &Application::status));
            EXPECT_EQ(Application::changes.entries().size(), 2u);
        }
    };
    core->dispatchSingal(intValue(kDriverDoor, 9), PROPERTY_TYPE_INT32);
    EXPECT_EQ(delivered(), (std::vector<int>{9, 0}));

    fake_gpio::setLevel(0);  // the same on the thread that subscribes
    Application::changes.clear();
    core->subscribe(&Application::changed, {kParkingWork, kPowerMode}, &Application::status);
    EXPECT_EQ(delivered(), std::vector<int>{1}) << "the callback ends the subscription that the power mode is for";

    // The lock is free again, for other threads, too.
    std::async(std::launch::async, [this] { core->unsubscribe(nullptr, {}); }).get();
}

TEST_F(SubscriptionTest, SubscribeWaitsForNoCallbackAndItsValuesComeNext) {
    static std::mutex applicationsLock;
    std::promise<void> entered;
    subscribe({kDriverDoor});
    Application::onChange = [&entered](const Change& change) {
        if (change.value.prop == kDriverDoor) {
            entered.set_value();
        }
        const std::lock_guard<std::mutex> lock(applicationsLock);
    };
    std::unique_lock<std::mutex> lock(applicationsLock);
    std::thread worker([this] { core->dispatchSingal(intValue(kDriverDoor, 9), PROPERTY_TYPE_INT32); });
    entered.get_future().wait();
    std::thread other([this] { core->dispatchSingal(intValue(kPassengerDoor, 8), PROPERTY_TYPE_INT32); });

    const std::vector<int> properties = {kPassengerDoor, kParkingWork, kPowerMode};
    for (const int level : {0, 1}) {
        fake_gpio::setLevel(level);
        EXPECT_TRUE(core->subscribe(&Application::changed, properties, nullptr));
    }
    EXPECT_TRUE(core->subscribe(nullptr, properties, nullptr)) << "what is left goes to the subscriber of then";
    EXPECT_TRUE(core->subscribe(&Application::changed, properties, nullptr));
    EXPECT_EQ(delivered(), std::vector<int>{9});
    lock.unlock();
    worker.join();
    other.join();
    EXPECT_EQ(delivered(), (std::vector<int>{9, 1, 2, 0, 2, 0, 2, 0, 2, 8}));

    // Nobody dispatches: the caller's thread does.
    Application::changes.clear();
    core->subscribe(&Application::changed, properties, nullptr);
    EXPECT_EQ(delivered(), (std::vector<int>{0, 2}));
}

TEST_F(SubscriptionTest, AReverseInterruptReachesTheApplicationWhichMayCallBack) {
    subscribe({kParkingWork, kPowerMode});
    Application::onChange = [this](const Change& change) {
        if (change.value.value.int32Values.at(0) == 1) {
            EXPECT_TRUE(core->subscribe(&Application::changed, {kPowerMode}, &Application::status));
        }
    };
    fake_gpio::edge(0);
    // The command; the power mode that the inner subscribe brings; the power mode of the interrupt itself.
    EXPECT_EQ(delivered(), (std::vector<int>{1, 2, 2}));
    EXPECT_NE(Application::changes.entries()[0].value.timestamp, 0);
}

class SubscriptionWithServiceTest : public CoreTest {
protected:
    SubscriptionWithServiceTest() { startCoreWithService(); }
};

TEST_F(SubscriptionWithServiceTest, ASignalOfTheServiceReachesTheApplication) {
    subscribe({0x21600E1F});
    server->signal(0x01384CD0, std::string("\x07\xD0", 2));
    ASSERT_TRUE(Application::changes.waitForSize(1));
    const Change change = Application::changes.entries()[0];
    EXPECT_EQ(change.value.value.floatValues, std::vector<float>{112.5f});
    EXPECT_EQ(change.type, PROPERTY_TYPE_FLOAT);
    EXPECT_GT(change.value.timestamp, 0);
    std::vector<float> floats;
    EXPECT_TRUE(core->getFloatProperty(0x21600E1F, floats));
    EXPECT_EQ(floats, std::vector<float>{112.5f});
}

TEST_F(SubscriptionWithServiceTest, AMessageThatComesBackIsReportedAndItsValuesRepeated) {
    subscribe({kDriverDoor});
    server->signal(0x031902D0, "\x01");
    ASSERT_TRUE(Application::changes.waitForSize(1));
    // Inside the status callback and the replay, every call is allowed.
    Application::onStatus = [this](const StatusChange& change) {
        std::vector<int> integers;
        core->getInt32Property(change.property, integers);
    };
    server->messageStatus(0x03190000, 64);
    server->messageStatus(0x03190000, 0);
    ASSERT_TRUE(Application::changes.waitForSize(6));  // the five doors, listed or not
    const std::vector<StatusChange> statuses = Application::statuses.entries();
    ASSERT_GE(statuses.size(), 10u);
    EXPECT_EQ(statuses[0], (StatusChange{kDriverDoor, VEHICLE_PROPERTY_STATUS_TIMEOUT}));
    EXPECT_EQ(statuses[5], (StatusChange{kDriverDoor, VEHICLE_PROPERTY_STATUS_AVAILABLE}));
    EXPECT_EQ(Application::changes.entries()[1].value.value.int32Values, std::vector<int>{1});
}

TEST_F(SubscriptionWithServiceTest, WhatAnApplicationThrowsCostsItNoOtherCallback) {
    subscribe({kDriverDoor});
    Application::onChange = [](const Change&) { throw std::runtime_error("changed"); };
    Application::onStatus = [](const StatusChange&) { throw std::runtime_error("status"); };
    for (const char* const value : {"\x01", "\x02", "\x03"}) {
        server->signal(0x031902D0, value);
    }
    server->messageStatus(0x03190000, 64);
    server->messageStatus(0x03190000, 0);
    ASSERT_TRUE(Application::changes.waitForSize(3 + 5));
    EXPECT_EQ(Application::statuses.entries().size(), 10u);
    EXPECT_TRUE(log_recorder::waitForLine("callApplication", "a callback of the application threw: changed"));
    EXPECT_TRUE(log_recorder::waitForLine("callApplication", "a callback of the application threw: status"));
}

TEST_F(SubscriptionWithServiceTest, UnsubscribeWaitsForACallbackThatRuns) {
    subscribe({kDriverDoor});
    std::promise<void> entered;
    std::promise<void> release;
    Application::onChange = [&](const Change&) {
        entered.set_value();
        release.get_future().wait();
    };
    server->signal(0x031902D0, "\x01");
    entered.get_future().wait();
    std::future<bool> done = std::async(std::launch::async, [this] { return core->unsubscribe(nullptr, {}); });
    EXPECT_EQ(done.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
    release.set_value();
    EXPECT_TRUE(done.get());
}

}  // namespace
