#include <atomic>
#include <future>
#include <thread>

#include "support/CoreTest.h"

namespace {

using namespace qvn::test;
using namespace qvn::platform::vehicle;

constexpr int kRounds = 300;
constexpr int kRoundsPerSession = 30;

class ConcurrencyTest : public CoreTest {};

// Every entrance of the library at once, each on a thread of its own; of interest to ThreadSanitizer, and for
// deadlocks.
TEST_F(ConcurrencyTest, EverythingAtOnce) {
    startCoreWithService();
    const std::vector<int> properties = {0x21400E20, 0x21600E1F, 0x11410A10, 0x2140307A};
    std::atomic<int> delivered{0};
    TestCore* const running = core.get();
    Application::onChange = [&delivered, running](const Change& change) {
        ++delivered;
        if (change.value.prop == 0x21400E20) {
            bool yes = true;
            running->setBoolProperty(0x21403033, yes);
        }
    };
    subscribe(properties);

    std::atomic<bool> done{false};
    std::vector<std::thread> threads;
    const auto repeat = [&](auto action) {
        threads.emplace_back([&done, action] {
            while (!done) {
                action();
            }
        });
    };
    repeat([&] { core->subscribe(&Application::changed, properties, &Application::status); });
    repeat([&] {
        core->unsubscribe(nullptr, {});
        core->subscribe(nullptr, properties, nullptr);
    });
    repeat([&] {
        VehiclePropValue value;
        std::vector<int> integers;
        std::vector<float> floats;
        bool yes = false;
        core->getPropValue(0x11410A10, &value);
        core->getPropertyType(0x21400E20);
        core->getInt32Property(0x11410A10, integers);
        core->getFloatProperty(0x21600E1F, floats);
        core->getBoolProperty(0x21400E20, yes);
        EXPECT_NE(integers.size(), 1u);  // a switch always carries its direction
    });
    repeat([&] {
        std::vector<int> number = {1};
        VehiclePropValue value = intValue(0x21401C23, 1);
        core->setInt32Property(0x21402030, number);
        core->setPropValue(0x21401C23, &value);
    });
    repeat([] {
        fake_gpio::edge(0);
        fake_gpio::edge(1);
    });

    for (int round = 0; round < kRounds; ++round) {
        if (round % kRoundsPerSession == 0) {
            server.reset();
            server = std::make_unique<CanServiceDouble>();
            ASSERT_TRUE(server->waitForSubscriptions(1));
        }
        server->signal(0x031902D0, std::string(1, static_cast<char>(round)));
        server->signal(0x02440F60, "\x01");
        server->signal(0x01384CD0, std::string("\x07\xD0", 2));
        server->messageStatus(0x03190000, round % 2 == 0 ? 64 : 0);
        server->messageStatus(0x02440000, round % 2 == 0 ? 0 : 64);
    }
    server->signal(0x016B0760, "\x7F");
    EXPECT_TRUE(log_recorder::waitForLine("signalAdapter", "EPB1_EPBSts value:127"));
    done = true;
    for (std::thread& thread : threads) {
        thread.join();
    }

    subscribe(properties);
    delivered = 0;
    server->signal(0x031902D0, "\x01");
    ASSERT_TRUE(Application::changes.waitUntil(
        [](const std::vector<Change>& all) { return !all.empty() && all.back().value.prop == 0x21400E20; }));
    core.reset();
    EXPECT_GE(delivered.load(), 1);
}

// Cores come and go while values and interrupts arrive: before the first connection the interrupts become values.
TEST_F(ConcurrencyTest, ACoreMayGoWhileSignalsAndInterruptsArrive) {
    constexpr int kCores = 30;
    std::atomic<bool> done{false};
    std::thread interrupts([&done] {
        for (int level = 0; !done; level = 1 - level) {
            fake_gpio::edge(level);
        }
    });
    std::thread service([&done] {
        while (!done) {
            CanServiceDouble comingAndGoing;
            comingAndGoing.waitForSubscriptions(1);
            for (int i = 0; i < 100 && !done; ++i) {
                comingAndGoing.signal(0x031902D0, std::string(1, static_cast<char>(i)));
                comingAndGoing.messageStatus(0x03190000, i % 2 == 0 ? 64 : 0);
            }
        }
    });
    for (int i = 0; i < kCores; ++i) {
        startCore();
        subscribe({0x21400E20, 0x2140307A});
        EXPECT_TRUE(Application::changes.waitForSize(static_cast<std::size_t>(i % 3)));
        core.reset();
        const std::size_t delivered = Application::changes.entries().size();
        std::this_thread::yield();
        EXPECT_EQ(Application::changes.entries().size(), delivered);
    }
    startCore();  // for the service that waits for a subscription
    done = true;
    interrupts.join();
    service.join();
}

// A second application in the same process is the witness that neither the service nor another client waits.
TEST_F(ConcurrencyTest, ACallbackThatBlocksLosesNothingAndHoldsNobodyUp) {
    constexpr int kValues = 20000;
    static Journal<int> witness;
    witness.clear();
    startCoreWithService();
    std::promise<void> release;
    const std::shared_future<void> released = release.get_future().share();
    Application::onChange = [released](const Change&) { released.wait(); };
    core->subscribe(&Application::changed, {0x214053B6}, nullptr);
    TestCore other;
    other.init();
    ASSERT_TRUE(server->waitForSubscriptions(2));
    other.subscribe([](VehiclePropValue value, PropertyType) { witness.add(value.value.int32Values.at(0)); },
                    {0x214053B6}, nullptr);

    std::vector<int> expected;
    for (int value = 0; value < kValues; ++value) {
        expected.push_back(value);
        server->signal(0x02746890, {static_cast<char>(value >> 8), static_cast<char>(value)});
    }
    ASSERT_TRUE(witness.waitForSize(kValues));
    EXPECT_EQ(witness.entries(), expected);
    EXPECT_EQ(Application::changes.entries().size(), 1u);
    release.set_value();
    ASSERT_TRUE(Application::changes.waitForSize(kValues));
    std::vector<int> received;
    for (const Change& change : Application::changes.entries()) {
        received.push_back(change.value.value.int32Values.at(0));
    }
    EXPECT_EQ(received, expected);
}

std::atomic<char> lastChanged{0};
std::atomic<char> lastStatus{0};

template <char kName>
void changedOf(VehiclePropValue, PropertyType) {
    lastChanged = kName;
}

template <char kName>
void statusOf(int, VehiclePropertyStatus) {
    lastStatus = kName;
}

TEST_F(ConcurrencyTest, OfTwoSubscriptionsAtOnceOneGetsBothValuesAndStatuses) {
    startCoreWithService();
    for (int round = 0; round < 10 * kRounds; ++round) {
        std::promise<void> start;
        const std::shared_future<void> started = start.get_future().share();
        const auto subscribe = [&](PropertyChangedCallback changed, SetErrorCallback status) {
            return std::thread([this, started, changed, status] {
                started.wait();
                core->subscribe(changed, {0x21400E20}, status);
            });
        };
        std::thread a = subscribe(&changedOf<'a'>, &statusOf<'a'>);
        std::thread b = subscribe(&changedOf<'b'>, &statusOf<'b'>);
        start.set_value();
        a.join();
        b.join();
        lastStatus = 0;
        server->messageStatus(0x03190000, 64);
        core->dispatchSingal(intValue(0x21400E20, round), PROPERTY_TYPE_INT32);
        while (lastStatus == 0) {
            core->flush();
        }
        ASSERT_EQ(lastChanged, lastStatus) << "round " << round;
    }
}

}  // namespace
