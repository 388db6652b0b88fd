#include <atomic>
#include <thread>

#include "support/CoreTest.h"

namespace {

using namespace qvn::test;
using namespace qvn::platform::vehicle;

constexpr int kRounds = 300;

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
    repeat([] { fake_gpio::edge(0); });

    for (int round = 0; round < kRounds; ++round) {
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

}  // namespace
