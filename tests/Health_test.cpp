#include "vehiclectl/Health.h"

#include <gtest/gtest.h>

#include "support/Updates.h"
#include "vehiclectl/PropertySelection.h"

namespace qvn::tools {
namespace {

TEST(Health, CountsValuesMessagesAndWhatTheServiceSendsAnew) {
    Health health(
        receivedProperties({"CSA3_*", "BCM1_DrvDoorSts", "BCM1_TrunkSts", "BCM8_PASWorkCmd", "PEPS2_SysPowerMod"}));
    const auto findings = [&] { return health.findings(2.0); };
    EXPECT_FALSE(findings().up);
    EXPECT_EQ(findings().withValue, 0U);
    health.take(serviceIs(true, 1));
    for (const int direction : {1000, 1001, 1002}) {
        health.take(valueOf("CSA3_SeekUpSwtSts", {0, direction}, 1));
    }
    for (int again = 0; again < 2; ++again) {  // from the client's callback and from its cache
        health.take(valueOf("BCM1_DrvDoorSts", {1}, 1));
    }
    health.take(statusOf("BCM1_DrvDoorSts", true, 1.5));
    for (const double at : {1.0, 2.0}) {
        health.take(valueOf("PEPS2_SysPowerMod", {2}, at, Update::Origin::ReverseLine));
        health.take(valueOf("BCM8_PASWorkCmd", {0}, at, Update::Origin::Link));
    }
    EXPECT_EQ(findings().rate, 0.0) << "first values, and what the client makes itself, are no traffic";
    health.take(valueOf("CSA3_SeekUpSwtSts", {1, 1002}, 2));
    health.take(valueOf("BCM1_DrvDoorSts", {1}, 2));
    health.take(valueOf("BCM1_DrvDoorSts", {1}, 3));
    health.take(statusOf("BCM1_TrunkSts", false, 3));
    const Findings found = findings();
    EXPECT_TRUE(found.up);
    EXPECT_EQ(found.rate, 1.5);
    EXPECT_EQ(found.properties, 5U);
    EXPECT_EQ(found.withValue, 3U);
    EXPECT_EQ(found.timedOut, std::set<std::string>{"BCM1"});
    EXPECT_EQ(found.messages.size(), 4U);
    health.take(statusOf("BCM1_TrunkSts", true, 4));
    health.take(serviceIs(false, 4));
    EXPECT_TRUE(findings().timedOut.empty());
    EXPECT_FALSE(findings().up);
    health.take(valueOf("BCM1_DrvDoorSts", {1}, 5));
    EXPECT_EQ(findings().rate, 1.5) << "a first value again";
}

}  // namespace
}  // namespace qvn::tools
