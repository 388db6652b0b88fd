#include "vehiclectl/Health.h"

#include <gtest/gtest.h>

#include "support/Updates.h"
#include "vehiclectl/PropertySelection.h"

namespace qvn::tools {
namespace {

using platform::vehicle::Reception;

TEST(Health, CountsValuesMessagesAndWhatTheServiceSendsAnew) {
    Health health(
        receivedProperties({"CSA3_*", "BCM1_DrvDoorSts", "BCM1_TrunkSts", "BCM8_PASWorkCmd", "PEPS2_SysPowerMod"}));
    Updates updates;
    const auto take = [&](auto... value) { health.take(updates.value(value...)); };
    for (const double at : {1.0, 2.0}) {
        take("BCM8_PASWorkCmd", 1, at, 0, Updates::Origin::ReverseLine);
        take("PEPS2_SysPowerMod", 2, at, 0, Updates::Origin::ReverseLine);
    }
    EXPECT_EQ(health.findings(2.0).withValue, 0U) << "the client makes these itself";
    for (const int direction : {1000, 1001, 1002}) {
        take("CSA3_SeekUpSwtSts", 0, 1 + direction * 1e-6, direction);
    }
    take("BCM1_DrvDoorSts", 1, 1);
    take("BCM8_PASWorkCmd", 0, 3);
    EXPECT_EQ(health.findings(2.0).rate, 0.0) << "first values are no traffic";
    take("CSA3_SeekUpSwtSts", 1, 2, 1002);
    take("BCM1_DrvDoorSts", 1, 2);
    take("BCM1_DrvDoorSts", 1, 3);
    health.take(updates.reception("BCM1_TrunkSts", Reception::TimedOut));
    const Findings found = health.findings(2.0);
    EXPECT_EQ(found.rate, 1.5);
    EXPECT_EQ(found.properties, 5U);
    EXPECT_EQ(found.withValue, 3U);
    EXPECT_EQ(found.timedOut, std::set<std::string>{"BCM1"});
    EXPECT_EQ(found.messages.size(), 4U);
    health.take(updates.reception("BCM1_TrunkSts", Reception::ServiceAway));
    EXPECT_TRUE(health.findings(2.0).timedOut.empty());
}

}  // namespace
}  // namespace qvn::tools
