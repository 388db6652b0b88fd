#include <vehicle/VehicleClient.h>
#include <vehicle/VehicleSession.h>

#include <atomic>
#include <functional>
#include <thread>

#include "client/ProcessCore.h"
#include "session/Sessions.h"
#include "support/CoreTest.h"
#include "support/FailingNew.h"

namespace {

using namespace qvn::test;
using namespace qvn::platform::vehicle;

constexpr int kDoor = 0x21400E20;
constexpr int kCommand = 0x21403033;

class OutOfMemoryTest : public CoreTest {
protected:
    /// Runs the action with its first allocation failing, then its second and so on until it needs no more. Each
    /// failure must come out, and leave no mutex locked: another thread dispatches, reads and sets after it.
    int failuresOf(const std::function<void()>& action) {
        int failures = 0;
        for (bool failed = true; failed; failures += failed ? 1 : 0) {
            allocationsLeft = failures;
            try {
                action();
                failed = false;
            } catch (const std::bad_alloc&) {
                failed = true;
            }
            allocationsLeft = -1;
            std::thread([this] { useEverything(); }).join();
        }
        return failures;
    }

    void useEverything() {
        EXPECT_TRUE(core->subscribe(&Application::changed, {kDoor}, &Application::status));
        Application::changes.clear();
        core->dispatchSingal(value, PROPERTY_TYPE_INT32);
        EXPECT_EQ(Application::changes.entries().size(), 1u);
        core->availableSignalCallback(static_cast<VehicleProperty>(kDoor));
        EXPECT_EQ(Application::changes.entries().size(), 2u);
        std::vector<int> integers;
        EXPECT_TRUE(core->getInt32Property(kDoor, integers));
        EXPECT_EQ(integers, value.value.int32Values);
        EXPECT_TRUE(core->setInt32Property(kCommand, integers));
    }

    /// Every payload member is too long to be stored without an allocation.
    VehiclePropValue value = [] {
        VehiclePropValue full = intValue(kDoor, 5);
        full.value.int64Values = {1};
        full.value.floatValues = {1.0F};
        full.value.bytes = {1};
        full.value.stringValue = std::string(100, 'x');
        return full;
    }();
};

TEST_F(OutOfMemoryTest, AFailedCopyComesOutAndUnlocks) {
    startCoreWithService();
    useEverything();
    const std::vector<int> properties = {kDoor};
    const struct {
        const char* what;
        std::function<void()> action;
        int copies;  // allocations that there are at least
    } cases[] = {
        {"getPropValue",
         [&] {
             VehiclePropValue out;
             core->getPropValue(kDoor, &out);
         },
         5},
        {"getBoolProperty",
         [&] {
             bool out = false;
             core->getBoolProperty(kDoor, out);
         },
         1},
        {"getInt32Property",
         [&] {
             std::vector<int> out;
             core->getInt32Property(kDoor, out);
         },
         1},
        {"getStringProperty",
         [&] {
             std::string out;
             core->getStringProperty(kDoor, out);
         },
         1},
        {"subscribe", [&] { core->subscribe(&Application::changed, properties, &Application::status); }, 1},
        {"dispatchSingal", [&] { core->dispatchSingal(value, PROPERTY_TYPE_INT32); }, 10},
        {"availableSignalCallback", [&] { core->availableSignalCallback(static_cast<VehicleProperty>(kDoor)); }, 5},
        {"setPropValue", [&] { core->setPropValue(kCommand, &value); }, 1},
    };
    for (const auto& [what, action, copies] : cases) {
        SCOPED_TRACE(what);
        EXPECT_GE(failuresOf(action), copies);
    }
}

// The GPIO library's thread must not meet an exception.
TEST_F(OutOfMemoryTest, AtAnEdgeOfTheReverseLineItCostsThatEdge) {
    startCore();
    core->subscribe(&Application::changed, {0x2140307A}, nullptr);
    int failures = 0;
    for (bool failed = true; failed; failures += failed ? 1 : 0) {
        Application::changes.clear();
        log_recorder::reset();
        allocationsLeft = failures;
        fake_gpio::interrupt();
        failed = allocationsLeft < 0;
        allocationsLeft = -1;
    }
    EXPECT_GT(failures, 5);
    EXPECT_EQ(Application::changes.entries().size(), 1u) << "without a failure the value arrives";
}

class SessionOutOfMemory : public LibraryTest {
protected:
    SessionOutOfMemory() {
        delete VehicleClient::getInstance();  // perhaps that of a test before
        VehicleClient::getInstance();
    }
    ~SessionOutOfMemory() override { delete VehicleClient::getInstance(); }

    static void receive(int number) { processCore()->dispatchSingal(intValue(kDoor, number), PROPERTY_TYPE_INT32); }
    static bool settle() {
        return VehicleSession::waitUntilIdle(std::chrono::steady_clock::now() + std::chrono::minutes(1));
    }
    static std::size_t sessions() {
        const qvn::sync::MutexLock lock(qvn::session::mutex);
        return qvn::session::Sessions::instance().all().size();
    }
    /// Whether it failed.
    static bool withAllocations(int count, const std::function<void()>& action) {
        allocationsLeft = count;
        try {
            action();
        } catch (const std::bad_alloc&) {
        }
        const bool failed = allocationsLeft < 0;
        allocationsLeft = -1;
        return failed;
    }

    const std::vector<int> door{kDoor};
    std::vector<SubscribeOptions> everyKind{SubscribeOptions(), SubscribeOptions().latestOnly(),
                                            SubscribeOptions().atMost(500)};
};

TEST_F(SessionOutOfMemory, LeavesNothingHalfBegun) {
    VehicleSession lasting;
    receive(1);
    int failures = 0;
    while (withAllocations(failures, [] { const VehicleSession session; })) {
        ++failures;
        EXPECT_EQ(sessions(), 1u) << failures;
    }
    EXPECT_GT(failures, 3);

    std::atomic<int> calls{0};
    for (const SubscribeOptions& options : everyKind) {
        const VehicleSession::Handler handler = [&calls](const PropertyState&) { ++calls; };
        for (int left = 0; withAllocations(left, [&] { lasting.subscribe(door, handler, options).end(); }); ++left) {
            ASSERT_TRUE(settle());
            calls = 0;
            receive(1);
            ASSERT_TRUE(settle());
            EXPECT_EQ(calls, 0) << left;
        }
    }
}

TEST_F(SessionOutOfMemory, WhatComesAfterItArrives) {
    for (const SubscribeOptions& options : everyKind) {
        bool failed = true;
        for (int left = 0; failed; ++left) {
            VehicleSession own, inPlace([](const VehicleSession::Task&task) { task(); });
            std::atomic<int> inOwn{0}, there{0};
            const Subscription first = own.subscribe(
                door, [&](const PropertyState& state) { inOwn = state.integer(); }, options);
            const Subscription second = inPlace.subscribe(
                door, [&](const PropertyState& state) { there = state.integer(); }, options);
            receive(1);
            failed = withAllocations(left, [] { receive(2); });
            receive(3);
            ASSERT_TRUE(settle());
            EXPECT_EQ(inOwn, 3) << left;
            const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
            while (there != 3 && std::chrono::steady_clock::now() < deadline) {
                std::this_thread::yield();  // an executor's handlers are not waited for by settle()
            }
            EXPECT_EQ(there, 3) << left;
        }
    }
}

}  // namespace
