#include <gpioport/gpioport_client.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <string>

#include "support/FailingNew.h"
#include "support/HostDir.h"
#include "support/Journal.h"

namespace {

constexpr int kLine = 87;
constexpr int kBothEdges = 3;
constexpr int kSomeAllocations = 12;  // between two callbacks; each that fails costs a pause
constexpr int kPositionsApart = 3;    // of the many that a thread makes at its start

std::atomic<int> allocationsAtStart{-1};

}  // namespace

/// Stands before the system's own: what a port's thread does first, and a pause after it has failed.
extern "C" int pthread_setname_np(pthread_t, const char*) noexcept {
    allocationsLeft = allocationsAtStart;
    furtherFailures = allocationsAtStart == 0 ? 2 : 0;
    return 0;
}

namespace {

struct Interrupts {
    /// Leaves a lack of memory behind on the port's thread, which ends with the next callback.
    static void count(void* context) {
        auto* const self = static_cast<Interrupts*>(context);
        self->unused = allocationsLeft;
        allocationsLeft = -1;
        self->seen.add(gpioport_get_inout_value(kLine));
        allocationsLeft = self->allocations;
        furtherFailures = self->allocations == 0 ? 2 : 0;
    }

    std::atomic<int> allocations{-1};
    std::atomic<int> unused{0};
    qvn::test::Journal<int> seen;
};

class GpioportOutOfMemory : public testing::Test {
protected:
    void drive(const char* level) { writeFile(mHost.path() / "gpio" / std::to_string(kLine), level); }

    const HostDir mHost;
};

}  // namespace

// Whatever allocation fails on the port's thread, the process and its line live on.

TEST_F(GpioportOutOfMemory, CostsNoEdge) {
    Interrupts interrupts;
    ASSERT_EQ(gpioport_irq_func_register(kLine, kBothEdges, Interrupts::count, &interrupts), 0);
    std::size_t edges = 0;
    for (int succeed = 0; succeed < kSomeAllocations; ++succeed) {
        interrupts.allocations = succeed;
        for (const char* const level : {"0", "1"}) {
            drive(level);
            ASSERT_TRUE(interrupts.seen.waitForSize(++edges)) << succeed;
            ASSERT_EQ(interrupts.seen.entries().back(), std::stoi(level));
        }
    }
    EXPECT_EQ(gpioport_exit(), 0);
}

TEST_F(GpioportOutOfMemory, KeepsNoPortFromOpening) {
    bool beyondTheLast = false;
    for (int succeed = 0; !beyondTheLast; succeed += kPositionsApart) {
        allocationsAtStart = succeed;
        drive("1");
        Interrupts interrupts;
        ASSERT_EQ(gpioport_irq_func_register(kLine, kBothEdges, Interrupts::count, &interrupts), 0);
        drive("0");
        ASSERT_EQ(interrupts.seen.atLeast(1), std::vector<int>{0}) << succeed;
        ASSERT_EQ(gpioport_exit(), 0);
        beyondTheLast = interrupts.unused >= 0;
    }
}
