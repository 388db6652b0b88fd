#include <gtest/gtest.h>
#include <signal.h>

#include <memory>
#include <sstream>
#include <string>

#include "e2e/Process.h"

namespace qvn::e2e {
namespace {

constexpr int kRounds = 20;

TEST(Restart, AWatchSeesEveryValueThroughTwentyKilledServices) {
    const Desk desk;
    const auto watch = desk.vehiclectl({"watch", "BCM1_DrvDoorSts"});
    std::string expected;
    for (int round = 1; round <= kRounds; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        const std::string atStart = std::to_string(2 * round);
        const std::string later = std::to_string(2 * round + 1);
        const std::string trace = desk.file("a.trace", "(0) BCM1_DrvDoorSts=" + atStart + "\n");
        const auto simulator = desk.simulator({"--no-initial", "--play", trace, "-"});
        ASSERT_TRUE(watch->waitForOutput(" " + atStart + " ")) << watch->output();
        simulator->write("BCM1_DrvDoorSts=" + later + "\n");
        ASSERT_TRUE(watch->waitForOutput(" " + later + " ")) << watch->output();
        simulator->signal(SIGKILL);
        ASSERT_EQ(simulator->wait(), -SIGKILL);
        expected += atStart + " " + later + " ";
    }
    watch->signal(SIGTERM);
    EXPECT_EQ(watch->wait(), 0);

    std::string seen;
    std::istringstream lines(watch->output());
    for (std::string time, name, value, status; lines >> time >> name >> value >> status;) {
        seen += value + " ";
    }
    EXPECT_EQ(seen, expected);
}

TEST(Restart, ABurstArrivesCompleteAndInOrder) {
    const Desk desk;
    const auto simulator = desk.simulator();
    const auto watch = desk.vehiclectl({"watch", "HAP_FD2_AVM_3DAngSts"});
    ASSERT_TRUE(watch->waitForOutput("available"));
    std::string burst;
    std::string expected = "0 ";
    for (int value = 1; value <= 2000; ++value) {
        burst += "HAP_FD2_AVM_3DAngSts=" + std::to_string(value) + "\n";
        expected += std::to_string(value) + " ";
    }
    simulator->write(burst);
    ASSERT_TRUE(watch->waitForOutput(" 2000 "));
    std::string seen;
    std::istringstream lines(watch->output());
    for (std::string time, name, value, status; lines >> time >> name >> value >> status;) {
        seen += value + " ";
    }
    EXPECT_EQ(seen, expected);
}

}  // namespace
}  // namespace qvn::e2e
