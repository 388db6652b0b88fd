#include <gpioport/gpioport_client.h>
#include <gtest/gtest.h>

#include <atomic>
#include <string>

#include "support/FailingNew.h"
#include "support/HostDir.h"
#include "support/Journal.h"

namespace {

constexpr int kLine = 87;
constexpr int kBothEdges = 3;
constexpr int kSomeAllocations = 12;  // between two callbacks; each that fails costs a pause

struct Interrupts {
    /// Leaves a lack of memory behind on the port's thread, which ends with the next callback.
    static void count(void* context) {
        allocationsLeft = -1;
        auto* const self = static_cast<Interrupts*>(context);
        self->seen.add(gpioport_get_inout_value(kLine));
        allocationsLeft = self->allocations;
    }

    std::atomic<int> allocations{-1};
    qvn::test::Journal<int> seen;
};

}  // namespace

// Whatever allocation fails on the port's thread, the process and its line live on.
TEST(GpioportOutOfMemory, CostsNoEdge) {
    const HostDir host;
    Interrupts interrupts;
    ASSERT_EQ(gpioport_irq_func_register(kLine, kBothEdges, Interrupts::count, &interrupts), 0);
    std::size_t edges = 0;
    for (int succeed = 0; succeed < kSomeAllocations; ++succeed) {
        interrupts.allocations = succeed;
        for (const char* const level : {"0", "1"}) {
            writeFile(host.path() / "gpio" / std::to_string(kLine), level);
            ASSERT_TRUE(interrupts.seen.waitForSize(++edges)) << succeed;
            ASSERT_EQ(interrupts.seen.entries().back(), std::stoi(level));
        }
    }
    EXPECT_EQ(gpioport_exit(), 0);
}
