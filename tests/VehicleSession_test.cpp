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
#include "support/Scale.h"

namespace {

using namespace qvn::test;
using namespace qvn::platform::vehicle;
using namespace std::chrono_literals;

constexpr std::uint32_t kDoor = 0x031902D0, kSpeed = 0x01384CD0, kDisplay = 0x02740AB0;  // signals
constexpr std::uint32_t kDoors = 0x03190000;                                             // their messages
constexpr int kDisplayCommand = ids::HUT6_CarMdlDispCmd, kDisplayState = ids::HAP_FD2_CarMdlDispSts;
constexpr auto kLong = 60s;

class VehicleSessionTest : public LibraryTest {
protected:
    VehicleSessionTest() {
        delete VehicleClient::getInstance();  // perhaps that of a test before, with another bus
        VehicleClient::getInstance();
    }
    ~VehicleSessionTest() override { delete VehicleClient::getInstance(); }

    /// Returns when it has its subscriber and sessions know of it.
    void startService() {
        server.emplace();
        ASSERT_TRUE(server->waitForSubscriptions(1));
        VehicleSession session;
        Journal<ServicePresence> seen;
        const Subscription service =
            session.subscribeService([&seen](const ServiceState& state) { seen.add(state.presence); });
        ASSERT_TRUE(seen.waitUntil([](const std::vector<ServicePresence>& all) {
            return !all.empty() && all.back() == ServicePresence::There;
        }));
    }
    static VehicleSession::Handler noting(Journal<PropertyState>& journal) {
        return [&journal](const PropertyState& state) { journal.add(state); };
    }
    static bool settle() { return VehicleSession::waitUntilIdle(std::chrono::steady_clock::now() + kLong); }

    std::optional<CanServiceDouble> server;
    Journal<PropertyState> updates;
    Journal<ServicePresence> presences;
};

std::vector<double> numbers(const std::vector<PropertyState>& states) {
    std::vector<double> result;
    for (const PropertyState& state : states) {
        result.push_back(state.number(-1));
    }
    return result;
}

std::vector<Reception> receptions(const std::vector<PropertyState>& states) {
    std::vector<Reception> result;
    for (const PropertyState& state : states) {
        result.push_back(state.reception);
    }
    return result;
}

TEST_F(VehicleSessionTest, TellsThePresentValueAndThenEveryReception) {
    VehicleSession session;
    startService();
    server->signal(kSpeed, "\x07\xD0");
    Journal<PropertyState> first;
    const Subscription early = session.subscribe({ids::ESP_FD2_VehSpd}, noting(first));
    ASSERT_TRUE(first.waitForSize(1));

    const Subscription both = session.subscribe({ids::ESP_FD2_VehSpd, ids::BCM1_DrvDoorSts}, noting(updates));
    VehicleSession other;
    const Subscription door = other.subscribe({ids::BCM1_DrvDoorSts, ids::ESP_FD2_VehSpd}, noting(first),
                                              SubscribeOptions().withoutPresent());
    ASSERT_TRUE(updates.waitForSize(1));
    server->signal(kDoor, "\x01");
    server->signal(kDoor, "\x01");
    const std::vector<PropertyState> got = updates.atLeast(3);
    EXPECT_EQ(numbers(got), (std::vector<double>{112.5, 1, 1}));
    EXPECT_EQ(got[0].property, ids::ESP_FD2_VehSpd);
    EXPECT_EQ(got[0].type, PROPERTY_TYPE_FLOAT);
    EXPECT_EQ(got[0].origin, ValueOrigin::Can);
    EXPECT_LT(got[1].timestamp, got[2].timestamp);
    EXPECT_EQ(numbers(first.atLeast(3)), (std::vector<double>{112.5, 1, 1}));

    EXPECT_EQ(session.state(ids::BCM1_DrvDoorSts).integer(), 1);
    EXPECT_EQ(session.state(ids::EPB1_EPBSts).type, PROPERTY_TYPE_INT32);
    EXPECT_FALSE(session.state(ids::EPB1_EPBSts).hasValue());
    EXPECT_EQ(session.state(ids::EPB1_EPBSts).integer(-5), -5);
    EXPECT_EQ(session.state(42).type, PROPERTY_TYPE_UNKNOWN);
}

TEST_F(VehicleSessionTest, HandlersOfASessionRunInTheOrderOfReception) {
    VehicleSession session;
    startService();
    std::promise<void> goOn;
    std::string order;
    const Subscription gate = session.subscribe({ids::EPB1_EPBSts}, [&](const PropertyState& state) {
        if (state.integer() == 1) {
            goOn.get_future().wait();
        }
        updates.add(state);
    });
    const auto note = [&order](const PropertyState& state) { order += std::to_string(state.integer()) + " "; };
    const Subscription door = session.subscribe({ids::BCM1_DrvDoorSts}, note);
    const Subscription speed = session.subscribe({ids::ESP_FD2_VehSpd}, note);
    server->signal(0x016B0760, "\x01");
    for (const char* const value : {"\x01", "\x02"}) {
        server->signal(kDoor, value);
        server->signal(kDoor, value);
        server->signal(kSpeed, "\x07\xD0");
    }
    session.setAndAwait(kDisplayCommand, 1, ids::EPB1_EPBSts, 2, kLong,
                        [&](const SetOutcome& outcome) { order += outcome ? "reached " : "not reached "; });
    server->signal(0x016B0760, "\x02");
    while (session.state(ids::EPB1_EPBSts).integer() != 2) {
        std::this_thread::yield();
    }
    server->signal(kDoor, "\x03");
    while (session.state(ids::BCM1_DrvDoorSts).integer() != 3) {
        std::this_thread::yield();
    }
    goOn.set_value();
    ASSERT_TRUE(updates.waitForSize(2));
    ASSERT_TRUE(settle());
    EXPECT_EQ(order, "1 1 112 2 2 112 reached 3 ");
}

TEST_F(VehicleSessionTest, ASwitchOfTheSteeringWheelHasItsDirection) {
    VehicleSession session;
    startService();
    const Subscription switches = session.subscribe({ids::CSA3_SeekUpSwtSts}, noting(updates));
    server->signal(0x02440FE0, "\x01");
    server->signal(kSpeed, "\x07\xD0");
    const PropertyState got = updates.atLeast(1).at(0);
    EXPECT_EQ(got.integer(), 1);
    EXPECT_EQ(got.direction, 1002);
}

TEST_F(VehicleSessionTest, ATimeOutReachesOnlyWhoSubscribedAPropertyOfTheMessage) {
    VehicleSession session;
    startService();
    Journal<PropertyState> others;
    const Subscription door = session.subscribe({ids::BCM1_DrvDoorSts}, noting(updates));
    const Subscription speed = session.subscribe({ids::ESP_FD2_VehSpd}, noting(others));
    server->signal(kDoor, "\x01");
    server->messageStatus(kDoors, 64);
    server->messageStatus(kDoors, 64);
    server->signal(kDoor, "\x02");  // a value does not say that the message is supervised again
    server->messageStatus(kDoors, 0);
    server->signal(kSpeed, "\x07\xD0");
    ASSERT_TRUE(others.waitForSize(1));
    ASSERT_TRUE(settle());
    EXPECT_EQ(receptions(updates.entries()), (std::vector<Reception>{Reception::Received, Reception::TimedOut,
                                                                     Reception::TimedOut, Reception::Received}));
    EXPECT_EQ(numbers(updates.entries()), (std::vector<double>{1, 1, 2, 2}));
    EXPECT_EQ(others.entries().size(), 1u);
    EXPECT_EQ(session.state(ids::BCM1_PassengerDoorSts).reception, Reception::NeverReceived);
}

TEST_F(VehicleSessionTest, TheServiceComesGoesAndComesBack) {
    VehicleSession session;
    EXPECT_EQ(session.serviceState().presence, ServicePresence::NeverThere);
    EXPECT_GT(session.serviceState().since, 0);
    const Subscription service =
        session.subscribeService([this](const ServiceState& state) { presences.add(state.presence); });
    const Subscription door =
        session.subscribe({ids::BCM1_DrvDoorSts, ids::EPB1_EPBSts}, noting(updates), SubscribeOptions().changesOnly());
    for (int i = 1; i < 3; ++i) {
        startService();
        server->signal(kDoor, "\x01");
        ASSERT_TRUE(updates.waitForSize(i == 1 ? 1 : 3));
        server.reset();
        ASSERT_TRUE(updates.waitForSize(i == 1 ? 2 : 4));
    }
    EXPECT_EQ(receptions(updates.entries()), (std::vector<Reception>{Reception::Received, Reception::ServiceAway,
                                                                     Reception::Received, Reception::ServiceAway}));
    EXPECT_EQ(presences.atLeast(5),
              (std::vector<ServicePresence>{ServicePresence::NeverThere, ServicePresence::There, ServicePresence::Gone,
                                            ServicePresence::There, ServicePresence::Gone}));
    EXPECT_EQ(session.state(ids::BCM1_DrvDoorSts).integer(), 1);
    EXPECT_EQ(session.state(ids::EPB1_EPBSts).reception, Reception::NeverReceived);
}

TEST_F(VehicleSessionTest, ASessionThatComesLaterKnowsWhatTheClientKnows) {
    startService();
    VehicleClient::getInstance()->subscribe(&Application::changed, {ids::ESP_FD2_VehSpd}, &Application::status);
    server->signal(kDoor, "\x01");
    server->messageStatus(kDoors, 64);
    server->signal(kSpeed, "\x07\xD0");
    ASSERT_TRUE(Application::changes.waitForSize(1));
    for (int i = 0; i < 2; ++i) {  // the second one when there was none for a while
        const VehicleSession session;
        EXPECT_EQ(session.serviceState().presence, ServicePresence::There);
        EXPECT_EQ(session.state(ids::BCM1_DrvDoorSts).integer(), 1);
        EXPECT_EQ(session.state(ids::BCM1_DrvDoorSts).reception, Reception::TimedOut);
        EXPECT_EQ(session.state(ids::BCM1_PassengerDoorSts).reception, Reception::TimedOut);
        EXPECT_EQ(session.state(ids::ESP_FD2_VehSpd).number(), 112.5);
        EXPECT_EQ(session.state(ids::ESP_FD2_VehSpd).reception, Reception::Received);
    }
}

TEST_F(VehicleSessionTest, TheReverseLineIsTheSourceUntilCanIs) {
    VehicleSession session;
    fake_gpio::setLevel(0);
    const Subscription views = session.subscribe({ids::BCM8_PASWorkCmd}, noting(updates));
    ASSERT_TRUE(updates.waitForSize(1));
    fake_gpio::edge(1);
    ASSERT_TRUE(updates.waitForSize(2));
    EXPECT_EQ(numbers(updates.entries()), (std::vector<double>{1, 0}));
    EXPECT_EQ(updates.entries()[1].origin, ValueOrigin::ReverseLine);
    VehiclePropValue cached;
    EXPECT_TRUE(VehicleClient::getInstance()->getPropValue(ids::BCM8_PASWorkCmd, &cached));
    EXPECT_EQ(cached.timestamp, 0) << "the client has no subscriber whose line it would be";

    const Subscription service =
        session.subscribeService([this](const ServiceState& state) { presences.add(state.presence); });
    startService();
    ASSERT_EQ(presences.atLeast(2).back(), ServicePresence::There);
    EXPECT_EQ(
        session.setAndAwait(kDisplayCommand, 1, ids::BCM8_PASWorkCmd, 0, 1ms, EffectCounts::WhenThereAlready).get().end,
        SetEnd::TimedOut)
        << "what the line tells is no effect";
    server->signal(0x029F0110, "\x01");
    ASSERT_TRUE(updates.waitForSize(3));
    EXPECT_EQ(updates.entries()[2].origin, ValueOrigin::Can);
    VehicleClient::getInstance()->subscribe(&Application::changed, {ids::BCM8_PASWorkCmd}, nullptr);
    ASSERT_TRUE(Application::changes.waitForSize(1));
    EXPECT_EQ(session.state(ids::BCM8_PASWorkCmd).origin, ValueOrigin::Can);
}

TEST_F(VehicleSessionTest, AnEdgeOfTheReverseLineWhileItsLevelIsReadIsNotForgotten) {
    VehicleSession session;
    fake_gpio::setLevel(0);
    fake_gpio::afterRead([] { fake_gpio::edge(1); });
    const Subscription views = session.subscribe({ids::BCM8_PASWorkCmd}, noting(updates));
    EXPECT_EQ(session.state(ids::BCM8_PASWorkCmd).integer(-1), 0);
}

TEST_F(VehicleSessionTest, SaysWhatIsWrongWithASubscription) {
    VehicleSession session;
    const auto errorOf = [&](const std::vector<int>& properties, const VehicleSession::Handler& handler,
                             const SubscribeOptions& options) -> std::string {
        try {
            const Subscription refused = session.subscribe(properties, handler, options);
            return "";
        } catch (const std::invalid_argument& error) {
            return error.what();
        }
    };
    const VehicleSession::Handler handler = noting(updates);
    const std::vector<int> door{ids::BCM1_DrvDoorSts};
    EXPECT_EQ(errorOf(door, handler, {}), "");
    EXPECT_EQ(errorOf(door, handler, SubscribeOptions().atMost(0.5).queue(1)), "");
    EXPECT_EQ(errorOf({}, handler, {}), "a subscription needs a property at least");
    EXPECT_EQ(errorOf({ids::BCM1_DrvDoorSts, 0x1234}, handler, {}),
              "property 0x00001234 does not exist, see <vehicle/PropertyIds.h>");
    EXPECT_EQ(errorOf({kDisplayCommand}, handler, {}),
              "HUT6_CarMdlDispCmd can only be set, the vehicle does not report it");
    EXPECT_EQ(errorOf(door, nullptr, {}), "a subscription needs a handler");
    EXPECT_EQ(errorOf(door, handler, SubscribeOptions().queue(0)),
              "a subscription's queue needs room for one update at least");
    for (const double rate : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_NE(errorOf(door, handler, SubscribeOptions().atMost(rate)), "") << rate;
    }
}

TEST_F(VehicleSessionTest, AHandlerMayDoAnything) {
    auto session = std::make_unique<VehicleSession>();
    auto doomed = std::make_unique<VehicleSession>();
    startService();
    Subscription itself, other, inner;
    other = session->subscribe({ids::ESP_FD2_VehSpd}, noting(updates));
    Journal<std::string> done;
    itself = session->subscribe({ids::BCM1_DrvDoorSts}, [&](const PropertyState& state) {
        inner = session->subscribe({ids::BCM1_DrvDoorSts}, [&](const PropertyState& again) {
            done.add("inner " + std::to_string(again.integer()));
        });
        other.end();
        itself.end();
        done.add(session->set(kDisplayCommand, 1).text);
        done.add("state " + std::to_string(session->state(state.property).integer()));
        throw std::runtime_error("of the handler");
    });
    const Subscription destroying = doomed->subscribe({ids::BCM1_DrvDoorSts}, [&](const PropertyState&) {
        doomed.reset();
        done.add("destroyed");
    });
    server->signal(kDoor, "\x01");
    EXPECT_TRUE(log_recorder::waitForLine("callApplication", "a callback of the application threw: of the handler"));
    server->signal(kDoor, "\x02");
    server->signal(kSpeed, "\x07\xD0");
    ASSERT_TRUE(done.waitForSize(5));
    ASSERT_TRUE(settle());
    std::vector<std::string> all = done.entries();
    std::sort(all.begin(), all.end());
    EXPECT_EQ(all, (std::vector<std::string>{"", "destroyed", "inner 1", "inner 2", "state 1"}));
    EXPECT_TRUE(updates.entries().empty());
    EXPECT_EQ(server->requests.atLeast(1).at(0).raw, "\x01");
}

TEST_F(VehicleSessionTest, WhoEndsASubscriptionWaitsForItsHandlerUnlessThatWaitsForHim) {
    startService();
    VehicleSession one, two;
    std::promise<void> oneRuns, twoRuns, mayReturn;
    std::shared_future<void> returning = mayReturn.get_future().share();
    Subscription first, second;
    first = one.subscribe({ids::BCM1_DrvDoorSts}, [&](const PropertyState&) {
        oneRuns.set_value();
        twoRuns.get_future().wait();
        second.end();  // while its handler ends this one
        returning.wait();
        updates.add({});
    });
    second = two.subscribe({ids::BCM1_DrvDoorSts}, [&](const PropertyState&) {
        twoRuns.set_value();
        oneRuns.get_future().wait();
        first.end();
        returning.wait();
        updates.add({});
    });
    server->signal(kDoor, "\x01");
    mayReturn.set_value();
    ASSERT_TRUE(updates.waitForSize(2));

    std::promise<void> runs;
    std::atomic<bool> returned{false}, released{false};
    const auto takeAMoment = [] { std::this_thread::sleep_for(10ms); };  // so that an end() that does not wait is seen
    std::shared_ptr<void> captured(nullptr, [&](void*) {
        takeAMoment();
        released = true;
    });
    Subscription slow = one.subscribe({ids::BCM1_DrvDoorSts}, [&, captured](const PropertyState&) {
        runs.set_value();
        takeAMoment();
        returned = true;
    });
    captured.reset();
    runs.get_future().wait();
    slow.end();
    EXPECT_TRUE(returned);
    EXPECT_TRUE(released) << "what the handler has captured may refer to what goes next";
}

TEST_F(VehicleSessionTest, ASlowHandlerHoldsUpItsOwnSessionOnly) {
    startService();
    VehicleClient::getInstance()->subscribe(&Application::changed, {ids::ESP_FD2_VehSpd}, nullptr);
    Application::changes.clear();
    VehicleSession blocked, other;
    std::promise<void> goOn, runs;
    std::vector<PropertyState> late;
    const Subscription stuck = blocked.subscribe(
        {ids::ESP_FD2_VehSpd},
        [&, blocks = true](const PropertyState& state) mutable {
            late.push_back(state);
            if (std::exchange(blocks, false)) {
                runs.set_value();
                goOn.get_future().wait();
            }
        },
        SubscribeOptions().queue(4));
    const Subscription swift = other.subscribe({ids::ESP_FD2_VehSpd}, noting(updates));
    server->signal(kSpeed, std::string("\x00\x00", 2));
    runs.get_future().wait();
    for (char i = 1; i <= 10; ++i) {
        server->signal(kSpeed, {'\x00', i});
    }
    ASSERT_TRUE(updates.waitForSize(11));
    ASSERT_TRUE(Application::changes.waitForSize(11));
    std::string busy;
    EXPECT_FALSE(VehicleSession::waitUntilIdle(std::chrono::steady_clock::now() + 1ms, &busy));
    EXPECT_EQ(busy, "ESP_FD2_VehSpd");
    goOn.set_value();
    ASSERT_TRUE(settle());
    ASSERT_EQ(late.size(), 5u);
    EXPECT_EQ(late[1].missed, 6u);
    EXPECT_EQ(late[2].missed, 0u);
    EXPECT_EQ(late[4].timestamp, other.state(ids::ESP_FD2_VehSpd).timestamp);
}

/// What an application's event loop would be.
struct Loop {
    /// Runs the next task, once it is there.
    void run() {
        ++ran;
        tasks.atLeast(ran).at(ran - 1)();
    }
    VehicleSession::Executor executor() {
        return [this](const VehicleSession::Task& task) { tasks.add(task); };
    }
    Journal<VehicleSession::Task> tasks;
    std::size_t ran = 0;
};

TEST_F(VehicleSessionTest, AnExecutorRunsTheHandlers) {
    startService();
    Loop loop;
    auto session = std::make_unique<VehicleSession>(loop.executor());
    std::thread::id ranOn;
    const Subscription door = session->subscribe({ids::BCM1_DrvDoorSts}, [&](const PropertyState& state) {
        ranOn = std::this_thread::get_id();
        updates.add(state);
    });
    const Subscription speed =
        session->subscribe({ids::ESP_FD2_VehSpd}, noting(updates), SubscribeOptions().atMost(50));
    server->signal(kDoor, "\x01");
    server->signal(kDoor, "\x02");
    while (updates.entries().size() < 2) {
        loop.run();  // once for both, or once for each
    }
    EXPECT_EQ(ranOn, std::this_thread::get_id());
    server->signal(kSpeed, "\x03\xE8");
    loop.run();
    server->signal(kSpeed, "\x07\xD0");  // comes when its time has
    loop.run();
    EXPECT_EQ(numbers(updates.entries()), (std::vector<double>{1, 2, 56.25, 112.5}));

    server->signal(kDoor, "\x03");
    ASSERT_TRUE(loop.tasks.waitForSize(loop.ran + 1));
    session.reset();
    loop.run();
    EXPECT_EQ(updates.entries().size(), 4u);
}

TEST_F(VehicleSessionTest, AnExecutorThatRunsOrRefusesAtOnceIsNoTrouble) {
    startService();
    VehicleSession inPlace([](const VehicleSession::Task& task) { task(); });
    std::atomic<int> refusals{0};
    VehicleSession refusing([&](const VehicleSession::Task& task) {
        if (++refusals < 3) {
            throw std::runtime_error("not yet");
        }
        task();
    });
    Journal<PropertyState> late;
    const Subscription first = inPlace.subscribe({ids::BCM1_DrvDoorSts}, [&](const PropertyState& state) {
        VehicleClient::getInstance()->subscribe(&Application::changed, {ids::BCM1_DrvDoorSts}, nullptr);
        updates.add(state);
    });
    const Subscription second = refusing.subscribe({ids::BCM1_DrvDoorSts}, noting(late));
    for (const char* const value : {"\x01", "\x02", "\x03"}) {
        server->signal(kDoor, value);
    }
    EXPECT_EQ(numbers(late.atLeast(3)), (std::vector<double>{1, 2, 3}));
    EXPECT_EQ(numbers(updates.atLeast(3)), (std::vector<double>{1, 2, 3}));
}

TEST_F(VehicleSessionTest, AnExecutorThatTakesATaskAndThrowsIsNoTrouble) {
    startService();
    Loop loop;
    VehicleSession session([&loop](const VehicleSession::Task& task) {
        loop.tasks.add(task);
        throw std::runtime_error("taken all the same");
    });
    std::promise<void> runs, goOn;
    const Subscription door = session.subscribe({ids::BCM1_DrvDoorSts}, [&](const PropertyState& state) {
        updates.add(state);
        if (state.integer() == 1) {
            runs.set_value();
            goOn.get_future().wait();
        }
    });
    server->signal(kDoor, "\x01");
    server->signal(kDoor, "\x02");
    ASSERT_TRUE(loop.tasks.waitForSize(2));
    std::thread first(loop.tasks.entries()[0]);
    runs.get_future().wait();
    loop.tasks.entries()[1]();
    EXPECT_EQ(loop.tasks.entries().size(), 2u) << "the first one does its work";
    goOn.set_value();
    first.join();
    server->signal(kDoor, "\x03");
    loop.tasks.atLeast(3).at(2)();
    EXPECT_EQ(numbers(updates.entries()), (std::vector<double>{1, 2, 3}));
}

TEST_F(VehicleSessionTest, SaysWhatIsWrongWithASet) {
    VehicleSession session;
    EXPECT_EQ(session.set(kDisplayCommand, 1).error, SetError::ServiceAway);
    EXPECT_EQ(session.set(kDisplayCommand, 1).text, "the CAN service is not there; HUT6_CarMdlDispCmd was not set");
    startService();
    const struct {
        int property;
        double number;
        SetError error;
        const char* text;
    } cases[] = {
        {kDisplayCommand, 255, SetError::None, ""},
        {ids::DMS_FD1_HeadYawAng, -75, SetError::None, ""},
        {kDisplayCommand, 256, SetError::OutOfRange,
         "256 does not fit HUT6_CarMdlDispCmd, which takes a whole number from 0 to 255"},
        {ids::DMS_FD1_HeadYawAng, -76, SetError::OutOfRange,
         "-76 does not fit DMS_FD1_HeadYawAng, which takes a whole number from -75 to 180"},
        {kDisplayCommand, 0.5, SetError::OutOfRange,
         "0.5 does not fit HUT6_CarMdlDispCmd, which takes a whole number from 0 to 255"},
        {kDisplayCommand, std::numeric_limits<double>::quiet_NaN(), SetError::OutOfRange,
         "nan does not fit HUT6_CarMdlDispCmd, which takes a whole number from 0 to 255"},
        {kDisplayState, 1, SetError::NotSettable,
         "HAP_FD2_CarMdlDispSts is only reported by the vehicle, it cannot be set"},
        {0x1234, 1, SetError::UnknownProperty, "property 0x00001234 does not exist, see <vehicle/PropertyIds.h>"},
    };
    for (const auto& c : cases) {
        const SetResult result = session.set(c.property, c.number);
        EXPECT_EQ(result.error, c.error) << c.text;
        EXPECT_EQ(result.text, c.text);
        EXPECT_EQ(static_cast<bool>(result), c.error == SetError::None);
    }
    EXPECT_EQ(session.set(ids::DMS_FD1_HeadYawAng, 500).lowest, -75);
    EXPECT_EQ(session.set(ids::DMS_FD1_HeadYawAng, 180).error, SetError::None);
    ASSERT_TRUE(server->requests.waitForSize(3));
    EXPECT_EQ(server->requests.entries()[2].raw, "\xFF");
}

TEST_F(VehicleSessionTest, AnAwaitedSetEndsAsItsEffectDoes) {
    VehicleSession session;
    const auto set = [&](std::chrono::milliseconds timeout, EffectCounts counts = EffectCounts::OnlyAfterTheSet) {
        return session.setAndAwait(kDisplayCommand, 1, kDisplayState, 1, timeout, counts);
    };
    EXPECT_EQ(set(kLong).get().refusal.error, SetError::ServiceAway);
    startService();
    server->signal(kDisplay, "\x01");
    server->signal(kSpeed, std::string("\x00\x00", 2));
    const Subscription speed = session.subscribe({ids::ESP_FD2_VehSpd}, noting(updates));
    ASSERT_TRUE(updates.waitForSize(1));

    EXPECT_EQ(set(1ms).get().text, "HAP_FD2_CarMdlDispSts is 1, not 1, after 1 ms");  // no news
    EXPECT_EQ(set(kLong, EffectCounts::WhenThereAlready).get().end, SetEnd::Reached);
    std::future<SetOutcome> reached = set(kLong);
    ASSERT_TRUE(server->requests.waitForSize(3));
    server->signal(kDisplay, "\x02");
    server->signal(kDisplay, "\x01");
    const SetOutcome outcome = reached.get();
    EXPECT_TRUE(outcome);
    EXPECT_EQ(outcome.effect.integer(), 1);
    EXPECT_EQ(outcome.text, "");

    // Inside a handler, on the thread that would run further ones.
    Journal<SetEnd> ends;
    const Subscription door = session.subscribe({ids::BCM1_DrvDoorSts}, [&](const PropertyState&) {
        ends.add(set(1ms).get().end);
        session.setAndAwait(kDisplayCommand, 1, kDisplayState, 1, 1ms,
                            [&](const SetOutcome& late) { ends.add(late.end); });
    });
    server->signal(kDoor, "\x01");
    EXPECT_EQ(ends.atLeast(2), (std::vector<SetEnd>{SetEnd::TimedOut, SetEnd::TimedOut}));

    std::future<SetOutcome> lost = set(kLong);
    ASSERT_TRUE(server->requests.waitForSize(6));
    server.reset();
    EXPECT_EQ(lost.get().end, SetEnd::ServiceGone);
    SetOutcome refused = session.setAndAwait(kDisplayCommand, 1, kDisplayCommand, 1, kLong).get();
    EXPECT_EQ(refused.end, SetEnd::Refused);
    EXPECT_EQ(refused.text,
              "HUT6_CarMdlDispCmd is not reported by the vehicle, it cannot show an effect; HUT6_CarMdlDispCmd was not "
              "set");
    EXPECT_EQ(session.setAndAwait(kDisplayCommand, 300, kDisplayState, 1, kLong).get().refusal.error,
              SetError::OutOfRange);
}

TEST_F(VehicleSessionTest, WhatWaitsWhenASessionGoesIsEnded) {
    startService();
    auto session = std::make_unique<VehicleSession>();
    bool called = false;
    std::future<SetOutcome> pending = session->setAndAwait(kDisplayCommand, 1, kDisplayState, 1, kLong);
    session->setAndAwait(kDisplayCommand, 1, kDisplayState, 1, kLong, [&](const SetOutcome&) { called = true; });
    const auto token = std::make_shared<int>();
    Subscription outlives = session->subscribe({ids::ESP_FD2_VehSpd}, [token](const PropertyState&) {});
    Subscription ended = session->subscribe({ids::ESP_FD2_VehSpd}, [token](const PropertyState&) {});
    EXPECT_EQ(token.use_count(), 3);
    ended.end();
    EXPECT_EQ(token.use_count(), 2) << "an ended subscription keeps nothing of the application's";
    session.reset();
    EXPECT_EQ(pending.get().end, SetEnd::SessionEnded);
    EXPECT_FALSE(called);
    EXPECT_EQ(token.use_count(), 1) << "nor does one that outlives its session";
    outlives.end();

    // A handler that waits for the effect holds nobody up.
    server->signal(kDoor, "\x01");
    session = std::make_unique<VehicleSession>();
    std::promise<void> waits;
    SetEnd end = SetEnd::Reached;
    const Subscription waiting = session->subscribe({ids::BCM1_DrvDoorSts}, [&](const PropertyState&) {
        std::future<SetOutcome> effect = session->setAndAwait(kDisplayCommand, 1, kDisplayState, 1, kLong);
        waits.set_value();
        end = effect.get().end;
    });
    waits.get_future().wait();
    session.reset();
    EXPECT_EQ(end, SetEnd::SessionEnded);
}

/// All that a subscriber and the log see of a drive.
std::vector<std::string> driveBeside(const std::function<void()>& begin) {
    delete VehicleClient::getInstance();
    log_recorder::reset();
    Application::reset();
    fake_gpio::setLevel(1);
    begin();
    std::vector<std::string> seen;
    CanServiceDouble server;
    VehicleClient& client = *VehicleClient::getInstance();
    EXPECT_TRUE(server.waitForSubscriptions(1));
    client.subscribe(&Application::changed, {ids::BCM1_DrvDoorSts, ids::BCM8_PASWorkCmd}, &Application::status);
    fake_gpio::edge(0);
    server.signal(kDoor, "\x01");
    server.messageStatus(kDoors, 64);
    server.messageStatus(kDoors, 0);
    server.signal(kDoor, "\x02");
    EXPECT_TRUE(Application::changes.waitUntil([](const std::vector<Change>& changes) {
        return !changes.empty() && changes.back().value.value.int32Values == std::vector<int>{2};
    }));
    for (const Change& change : Application::changes.entries()) {
        seen.push_back("changed " + std::to_string(change.value.prop) + " " +
                       std::to_string(change.value.value.int32Values.size()));
    }
    for (const StatusChange& status : Application::statuses.entries()) {
        seen.push_back("status " + std::to_string(status.property) + " " + std::to_string(status.status));
    }
    for (const LogLine& line : log_recorder::lines()) {
        seen.push_back(line.function + ":" + line.text);
    }
    return seen;
}

TEST_F(VehicleSessionTest, TheClientIsTheSameBesideIt) {
    const std::vector<std::string> alone = driveBeside([] {});
    std::unique_ptr<VehicleSession> session;
    Subscription all;
    const std::vector<std::string> beside = driveBeside([&] {
        session = std::make_unique<VehicleSession>();
        all = session->subscribe({ids::BCM1_DrvDoorSts, ids::BCM8_PASWorkCmd}, noting(updates));
    });
    EXPECT_EQ(beside, alone);
    EXPECT_GT(alone.size(), 30u);
    ASSERT_TRUE(updates.waitForSize(4));
}

// Sessions made, used and destroyed on many threads while the service comes and goes and the reverse line moves; of
// interest to ThreadSanitizer, and for deadlocks.
TEST_F(VehicleSessionTest, EverythingAtOnce) {
    startService();
    VehicleSession lasting;
    const Subscription lastingDoor = lasting.subscribe({ids::BCM1_DrvDoorSts}, noting(updates));
    std::atomic<bool> done{false};
    std::vector<std::thread> threads;
    const auto repeat = [&](auto action) {
        threads.emplace_back([&done, action] {
            while (!done) {
                action();
            }
        });
    };
    const auto ignore = [](const PropertyState&) {};
    repeat([&] {
        VehicleSession session;
        const Subscription all =
            session.subscribe({ids::BCM1_DrvDoorSts, ids::ESP_FD2_VehSpd, ids::BCM8_PASWorkCmd}, ignore);
        Subscription some = session.subscribe({ids::BCM1_DrvDoorSts}, [&](const PropertyState& state) {
            session.set(kDisplayCommand, state.integer() & 1);
            session.setAndAwait(kDisplayCommand, 1, kDisplayState, 1, 1ms, [](const SetOutcome&) {});
        });
        std::this_thread::yield();
        some.end();
    });
    repeat([&] {
        VehicleSession inPlace([](const VehicleSession::Task& task) { task(); });
        const Subscription doors = inPlace.subscribe({ids::BCM1_DrvDoorSts}, [&](const PropertyState&) {
            VehiclePropValue value;
            VehicleClient::getInstance()->getPropValue(ids::ESP_FD2_VehSpd, &value);
        });
        const Subscription speed = inPlace.subscribe({ids::ESP_FD2_VehSpd}, ignore, SubscribeOptions().atMost(1000));
        inPlace.setAndAwait(kDisplayCommand, 1, ids::BCM1_DrvDoorSts, 1, 2ms).wait();
    });
    repeat([&] {
        Subscription door = lasting.subscribe({ids::BCM1_DrvDoorSts}, ignore, SubscribeOptions().changesOnly());
        Subscription service = lasting.subscribeService([&](const ServiceState&) { door.end(); });
        lasting.state(ids::BCM1_DrvDoorSts);
        lasting.serviceState();
    });
    repeat([] { VehicleSession::waitUntilIdle(std::chrono::steady_clock::now() + 1ms); });
    repeat([] {
        fake_gpio::edge(0);
        fake_gpio::edge(1);
    });
    repeat([] {
        VehicleClient::getInstance()->subscribe(&Application::changed, {ids::BCM8_PASWorkCmd}, &Application::status);
        VehicleClient::getInstance()->unsubscribe(nullptr, {});
    });
    for (int round = 0; round < scaled(300); ++round) {
        if (round % 30 == 29) {
            server.reset();
            startService();
        }
        server->signal(kDoor, std::string(1, static_cast<char>(round)));
        server->signal(kSpeed, "\x07\xD0");
        server->messageStatus(kDoors, round % 2 == 0 ? 64 : 0);
    }
    server->messageStatus(kDoors, 0);
    server->signal(kDoor, "\x7F");
    EXPECT_TRUE(updates.waitUntil(
        [](const std::vector<PropertyState>& all) { return !all.empty() && all.back().integer() == 0x7F; }));
    done = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_TRUE(settle());
    EXPECT_TRUE(lasting.state(ids::BCM1_DrvDoorSts).isCurrent());
}

}  // namespace
