#include <vehicle/PropertyIds.h>
#include <vehicle/VehicleClient.h>
#include <vehicle/VehicleSession.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "client/ProcessCore.h"
#include "support/CoreTest.h"
#include "support/FailingNew.h"

namespace {

using namespace qvn::test;
using namespace qvn::platform::vehicle;

constexpr int kMany = 1'000'000;  // more than any thread of the test allocates

class AllocationsTest : public LibraryTest {
protected:
    struct Counts {
        int receiving = 0;  // by the thread that receives
        int handling = 0;   // by a session's own
    };

    /// Receives values in bursts, with what they lead to. The present one is told again: every third is no change.
    Counts receiveSome() {
        Counts counts;
        const int before = leftToSession;
        for (int i = 0; i < 300; ++i) {
            VehiclePropValue value = intValue(ids::BCM1_DrvDoorSts, i % 3 / 2);
            allocationsLeft = kMany;
            core->dispatchSingal(std::move(value), PROPERTY_TYPE_INT32);
            counts.receiving += kMany - allocationsLeft;
            allocationsLeft = -1;
            if (i % 5 == 0) {
                EXPECT_TRUE(VehicleSession::waitUntilIdle(std::chrono::steady_clock::now() + std::chrono::seconds(60)));
            }
        }
        counts.handling = before - leftToSession;
        return counts;
    }

    void handled() {
        ++updates;
        if (std::this_thread::get_id() != receiver) {
            allocationsLeft = allocationsLeft < 0 ? kMany : allocationsLeft;
            leftToSession = allocationsLeft;
        }
    }

    VehicleClientImpl* const core = (VehicleClient::getInstance(), processCore());
    const std::thread::id receiver = std::this_thread::get_id();
    std::atomic<int> leftToSession{kMany};
    std::atomic<int> updates{0};
};

// Memory is allocated while more waits than ever did before. That has an end; a signal that costs memory has none.
TEST_F(AllocationsTest, ASessionAllocatesNothingForASignal) {
    receiveSome();
    const int withoutSession = receiveSome().receiving;
    const VehicleSession::Executor inThisThread = [](const VehicleSession::Task& task) { task(); };
    const struct {
        const char* what;
        SubscribeOptions options;
    } cases[] = {
        {"every reception", SubscribeOptions()},
        {"of a full queue", SubscribeOptions().queue(1)},
        {"changes only", SubscribeOptions().changesOnly()},
        {"latest only", SubscribeOptions().latestOnly()},
        {"at most 1,000 a second", SubscribeOptions().atMost(1000)},
        {"changes, at most 1,000 a second", SubscribeOptions().changesOnly().atMost(1000)},
    };
    for (const auto& [what, options] : cases) {
        for (const bool hasThread : {true, false}) {
            SCOPED_TRACE(std::string(what) + (hasThread ? ", own thread" : ", executor"));
            updates = 0;
            leftToSession = kMany;
            VehicleSession session(hasThread ? VehicleSession::Executor() : inThisThread);
            const auto handler = [this](const PropertyState&) { handled(); };
            const Subscription one = session.subscribe({ids::BCM1_DrvDoorSts}, handler, options);
            const Subscription other = session.subscribe({ids::BCM1_DrvDoorSts, ids::ESP_FD2_VehSpd}, handler, options);
            const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
            Counts counts = receiveSome();
            while ((counts.receiving > withoutSession || counts.handling != 0 || updates <= 2) &&
                   std::chrono::steady_clock::now() < end) {
                counts = receiveSome();
            }
            EXPECT_EQ(counts.receiving, withoutSession);
            EXPECT_EQ(counts.handling, 0);
            EXPECT_GT(updates, 2);
        }
    }
}

}  // namespace
