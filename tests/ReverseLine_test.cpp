#include <stdexcept>

#include "support/ClientTest.h"

namespace {

using namespace qvn::test;

class ReverseLineTest : public ClientTest {
protected:
    /// The parking work commands that were injected; each must be followed by the power mode.
    std::vector<int> commands() {
        std::vector<int> found;
        const std::vector<Change> all = values.entries();
        for (std::size_t i = 0; i + 1 < all.size(); i += 2) {
            EXPECT_EQ(all[i].value.prop, 0x2140307A);
            EXPECT_EQ(all[i].type, 3);
            EXPECT_EQ(all[i].value.areaId, 0);
            EXPECT_EQ(all[i].value.status, 0);
            EXPECT_EQ(all[i + 1].value.prop, 0x21403837);
            EXPECT_EQ(all[i + 1].value.value.int32Values, std::vector<int>{2});
            EXPECT_EQ(all[i + 1].type, 3);
            found.push_back(all[i].value.value.int32Values.at(0));
        }
        return found;
    }
    std::vector<std::string> texts(const std::string& function) {
        std::vector<std::string> found;
        for (const LogLine& line : log_recorder::linesOf(function)) {
            EXPECT_EQ(line.level, 3);
            found.push_back(line.text);
        }
        return found;
    }
};

TEST_F(ReverseLineTest, ArmingActsOnThePresentLevel) {
    const struct {
        int level;
        std::vector<int> commands;
        std::vector<std::string> log;
    } cases[] = {
        {0, {1}, {"T22CanServiceFdbusClient gpio low level interrupt to open AVM/RVC/HAP!"}},
        {1, {0}, {"T22CanServiceFdbusClient gpio high level interrupt to close AVM/RVC/HAP!"}},
        {-1, {}, {}},
        {2, {}, {}},
    };
    for (const auto& [level, expected, log] : cases) {
        SCOPED_TRACE(level);
        fake_gpio::reset();
        log_recorder::reset();
        values.clear();
        fake_gpio::setLevel(level);
        makeClient();
        client->registerErrSignalCallback(nullptr);
        EXPECT_EQ(commands(), expected);
        EXPECT_EQ(texts("registerErrSignalCallback"), log);
        EXPECT_EQ(fake_gpio::calls().back(), "register 87 3");
        client.reset();
    }
}

TEST_F(ReverseLineTest, InterruptsOpenAndCloseWhileTheServiceWasNeverReached) {
    makeClient();
    client->registerErrSignalCallback(nullptr);
    fake_gpio::edge(0);
    fake_gpio::edge(1);
    fake_gpio::edge(-1);
    EXPECT_EQ(commands(), (std::vector<int>{0, 1, 0}));
    EXPECT_EQ(texts("gpioIsrCallback"),
              (std::vector<std::string>{"T22CanServiceFdbusClient gpio high level interrupt to open AVM/RVC/HAP!",
                                        "T22CanServiceFdbusClient gpio high level interrupt to close AVM/RVC/HAP!"}));
}

TEST_F(ReverseLineTest, OnceOnlineTheLineIsLeftToCanEvenAfterTheServiceDied) {
    makeClient();
    client->registerErrSignalCallback(nullptr);
    connectClient();
    values.clear();
    fake_gpio::edge(0);
    server.unbind();
    ASSERT_TRUE(client->waitForOffline());
    fake_gpio::edge(1);
    EXPECT_TRUE(values.entries().empty());
    EXPECT_EQ(texts("gpioIsrCallback"),
              (std::vector<std::string>(2, "T22CanServiceFdbusClient online, gpioIsrCallback return!")));
}

TEST_F(ReverseLineTest, ArmingActsOnTheLevelEvenWhenOnline) {
    makeClient();
    connectClient();
    fake_gpio::setLevel(0);
    client->registerErrSignalCallback(nullptr);
    EXPECT_EQ(commands(), std::vector<int>{1});
}

TEST_F(ReverseLineTest, WithoutASignalCallbackInterruptsAreSilent) {
    makeClient();
    client->registerSignalCallback(nullptr);
    client->registerErrSignalCallback(nullptr);
    log_recorder::reset();
    fake_gpio::edge(0);
    client->sendPasworkCmd(1);
    EXPECT_TRUE(log_recorder::lines().empty());
    EXPECT_TRUE(values.entries().empty());
}

TEST_F(ReverseLineTest, AnEdgeBetweenTheFirstReadingAndTheRegistrationIsNotLost) {
    fake_gpio::beforeRegistration([] { fake_gpio::setLevel(0); });
    makeClient();
    client->registerErrSignalCallback(nullptr);
    EXPECT_EQ(commands(), (std::vector<int>{0, 1}));
}

TEST_F(ReverseLineTest, ALineThatNeverAnswersTheSameHoldsNobodyUp) {
    fake_gpio::flutter();
    makeClient();
    client->registerErrSignalCallback(nullptr);
    EXPECT_EQ(commands().size(), 2u);
}

TEST_F(ReverseLineTest, ALineThatCannotBeWatchedIsLogged) {
    fake_gpio::failRegistrations();
    makeClient();
    client->registerErrSignalCallback(nullptr);
    const std::vector<LogLine> log = log_recorder::linesOf("watchReverseLine");
    ASSERT_EQ(log.size(), 1u);
    EXPECT_EQ(log[0].level, 1);
    EXPECT_NE(log[0].text.find("cannot watch the reverse line, GPIO 87"), std::string::npos) << log[0];
}

TEST_F(ReverseLineTest, WhatAnApplicationThrowsStaysOffTheGpioThread) {
    makeClient();
    client->registerErrSignalCallback(nullptr);
    int calls = 0;
    client->registerSignalCallback([&calls](VehiclePropValue, PropertyType) {
        if (++calls == 1) {
            throw std::runtime_error("no camera");
        }
        throw 7;
    });
    fake_gpio::edge(0);
    EXPECT_EQ(calls, 2) << "the power mode follows whatever became of the command";
    const std::vector<LogLine> log = log_recorder::linesOf("callApplication");
    ASSERT_EQ(log.size(), 2u);
    EXPECT_EQ(log[0].level, 1);
    EXPECT_EQ(log[0].text, "a callback of the application threw: no camera");
}

TEST_F(ReverseLineTest, CommandsPassThroughUnchanged) {
    makeClient();
    client->sendPasworkCmd(-7);
    EXPECT_EQ(commands(), std::vector<int>{-7});
}

}  // namespace
