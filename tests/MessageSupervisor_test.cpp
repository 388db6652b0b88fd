#include "can-service-sim/MessageSupervisor.h"

#include <gtest/gtest.h>

namespace qvn::tools {
namespace {

constexpr std::uint32_t kMessage = 0x02980000;
constexpr std::uint32_t kOther = 0x01370000;

TEST(MessageSupervisor, TimesOutFivePeriodsAfterTheLastSignal) {
    MessageSupervisor supervisor;
    EXPECT_FALSE(supervisor.received(kMessage, 10.0, 0.25));
    EXPECT_FALSE(supervisor.received(kMessage, 11.0, 0.25));
    EXPECT_EQ(supervisor.nextDeadline(), 12.25);
    EXPECT_TRUE(supervisor.newlyTimedOut(12.0).empty());
    EXPECT_EQ(supervisor.newlyTimedOut(12.25), std::vector<std::uint32_t>{kMessage});
    EXPECT_TRUE(supervisor.newlyTimedOut(20.0).empty()) << "a time-out is told once";
    EXPECT_FALSE(supervisor.nextDeadline());
}

TEST(MessageSupervisor, AnySignalEndsTheTimeOutAndTheWatchGoesOn) {
    MessageSupervisor supervisor;
    supervisor.received(kMessage, 0.0, 1.0);
    supervisor.newlyTimedOut(5.0);
    EXPECT_TRUE(supervisor.received(kMessage, 6.0));
    EXPECT_FALSE(supervisor.received(kMessage, 7.0));
    EXPECT_EQ(supervisor.newlyTimedOut(12.0), std::vector<std::uint32_t>{kMessage});
}

TEST(MessageSupervisor, TheLongestPeriodOfAMessageCounts) {
    MessageSupervisor supervisor;
    supervisor.received(kMessage, 0.0, 1.0);
    supervisor.received(kMessage, 0.5, 0.125);
    EXPECT_EQ(supervisor.nextDeadline(), 5.5);
}

TEST(MessageSupervisor, MessagesWithoutCyclesAreNotWatched) {
    MessageSupervisor supervisor;
    EXPECT_FALSE(supervisor.received(kMessage, 0.0));
    EXPECT_FALSE(supervisor.nextDeadline());
    supervisor.received(kOther, 0.0, 1.0);
    EXPECT_EQ(supervisor.newlyTimedOut(100.0), std::vector<std::uint32_t>{kOther});
}

TEST(MessageSupervisor, AStatusGivenByHandStays) {
    MessageSupervisor supervisor;
    supervisor.received(kMessage, 0.0, 1.0);
    supervisor.setByHand(kMessage, true);
    EXPECT_FALSE(supervisor.received(kMessage, 1.0, 1.0)) << "signals do not end it";
    EXPECT_TRUE(supervisor.newlyTimedOut(100.0).empty());
    supervisor.setByHand(kMessage, false);
    EXPECT_TRUE(supervisor.newlyTimedOut(200.0).empty()) << "no longer watched";
    EXPECT_FALSE(supervisor.received(kMessage, 201.0, 1.0));
    EXPECT_EQ(supervisor.newlyTimedOut(206.0), std::vector<std::uint32_t>{kMessage}) << "a cycle watches it again";
}

}  // namespace
}  // namespace qvn::tools
