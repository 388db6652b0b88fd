#include <functional>
#include <thread>

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

}  // namespace
