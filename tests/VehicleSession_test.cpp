#include <vehicle/PropertyIds.h>
#include <vehicle/VehicleClient.h>
#include <vehicle/VehicleSession.h>

#include <future>
#include <memory>
#include <optional>
#include <stdexcept>
#include <thread>

#include "support/CanServiceDouble.h"
#include "support/FakeGpioport.h"
#include "support/LibraryTest.h"
#include "support/LogRecorder.h"

namespace {

using namespace qvn::test;
using namespace qvn::platform::vehicle;
using namespace std::chrono_literals;

constexpr std::uint32_t kDoor = 0x031902D0;
constexpr std::uint32_t kSpeed = 0x01384CD0;

class VehicleSessionTest : public LibraryTest {
protected:
    void startService() {
        server.emplace();
        ASSERT_TRUE(server->waitForSubscriptions(++connections));
    }
    VehicleSession::Handler noting(Journal<PropertyState>& journal) {
        return [&journal](const PropertyState& state) { journal.add(state); };
    }

    std::optional<CanServiceDouble> server;
    std::size_t connections = 0;
    Journal<PropertyState> updates;
};

std::vector<double> numbers(const std::vector<PropertyState>& states) {
    std::vector<double> result;
    for (const PropertyState& state : states) {
        result.push_back(state.number(-1));
    }
    return result;
}

TEST_F(VehicleSessionTest, TellsThePresentValueAndThenEveryReception) {
    VehicleSession session;
    startService();
    server->signal(kSpeed, std::string("\x07\xD0", 2));
    Journal<PropertyState> first;
    const Subscription early = session.subscribe({ids::ESP_FD2_VehSpd}, noting(first));
    ASSERT_TRUE(first.waitForSize(1));

    const Subscription speed = session.subscribe({ids::ESP_FD2_VehSpd, ids::BCM1_DrvDoorSts}, noting(updates));
    const Subscription later =
        session.subscribe({ids::BCM1_DrvDoorSts}, noting(first), SubscribeOptions().withoutPresent());
    ASSERT_TRUE(updates.waitForSize(1));
    server->signal(kDoor, "\x01");
    server->signal(kDoor, "\x01");
    const std::vector<PropertyState> got = updates.atLeast(3);
    EXPECT_EQ(numbers(got), (std::vector<double>{112.5, 1, 1}));
    EXPECT_EQ(got[0].property, ids::ESP_FD2_VehSpd);
    EXPECT_EQ(got[0].type, PROPERTY_TYPE_FLOAT);
    EXPECT_EQ(got[0].origin, ValueOrigin::Can);
    EXPECT_TRUE(got[2].isCurrent());
    EXPECT_LT(got[1].timestamp, got[2].timestamp);
    EXPECT_EQ(session.state(ids::BCM1_DrvDoorSts).integer(), 1);
    EXPECT_FALSE(session.state(ids::EPB1_EPBSts).hasValue());
    EXPECT_EQ(session.state(42).type, PROPERTY_TYPE_UNKNOWN);
    EXPECT_EQ(numbers(first.atLeast(3)), (std::vector<double>{112.5, 1, 1}));
}

}  // namespace
