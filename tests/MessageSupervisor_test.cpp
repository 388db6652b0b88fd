#include "can-service-sim/MessageSupervisor.h"

#include <gtest/gtest.h>

namespace qvn::tools {
namespace {

VehicleTime at(double seconds) {
    return vehicleTime(seconds);
}

TEST(MessageSupervisor, TimesOutFivePeriodsAfterTheLastSignal) {
    MessageSupervisor supervisor;
    EXPECT_FALSE(supervisor.received(at(9.0)));
    EXPECT_FALSE(supervisor.deadline()) << "what is on no cycle is not watched";
    EXPECT_FALSE(supervisor.received(at(10.0), 1.0));
    EXPECT_FALSE(supervisor.received(at(11.0), 0.125));
    EXPECT_EQ(supervisor.deadline(), at(16.0)) << "the longest period counts";
    supervisor.timeOut();
    EXPECT_FALSE(supervisor.deadline()) << "a time-out is told once";
    EXPECT_TRUE(supervisor.received(at(17.0)));
    EXPECT_FALSE(supervisor.received(at(18.0)));
    EXPECT_EQ(supervisor.deadline(), at(23.0)) << "the watch goes on";
}

TEST(MessageSupervisor, AStatusGivenByHandStays) {
    MessageSupervisor supervisor;
    supervisor.received(at(0.0), 1.0);
    supervisor.setByHand(true);
    EXPECT_FALSE(supervisor.received(at(1.0), 1.0)) << "signals do not end it";
    EXPECT_FALSE(supervisor.deadline());
    supervisor.setByHand(false);
    EXPECT_FALSE(supervisor.received(at(200.0)));
    EXPECT_FALSE(supervisor.deadline()) << "no longer watched";
    EXPECT_FALSE(supervisor.received(at(201.0), 0.5));
    EXPECT_EQ(supervisor.deadline(), at(203.5)) << "a cycle watches it again";
}

}  // namespace
}  // namespace qvn::tools
