#include <signal.h>
#include <sys/resource.h>

#include <filesystem>

#include "e2e/Desk.h"
#include "e2e/WatchOutput.h"
#include "support/Scale.h"

namespace qvn::e2e {
namespace {

constexpr rlim_t kNoMoreDescriptors = 3;  // those that are open stay open
constexpr rlim_t kEnoughDescriptors = 1024;

using Faults = DeskTest;

void limitDescriptors(const Process& process, rlim_t limit) {
    const rlimit limits{limit, kEnoughDescriptors};
    ASSERT_EQ(prlimit(process.pid(), RLIMIT_NOFILE, &limits, nullptr), 0);
}

TEST_F(Faults, AServiceThatIsStoppedForSecondsGoesOnWithItsClients) {
    const auto simulator = desk.simulator();
    const auto watch = desk.watch(kWord);
    simulator->signal(SIGSTOP);
    const auto late = desk.start("vehiclectl watch " + kWord);
    simulator->write(wordLines(1, 2));
    EXPECT_EQ(desk.run("vehiclectl get " + kWord + " --timeout 2").exitCode, 3);
    EXPECT_EQ(valuesOf(watch->output(), kWord), std::vector<int>{0});
    simulator->signal(SIGCONT);
    EXPECT_TRUE(waitForValue(*watch, kWord, 2));
    EXPECT_TRUE(waitForValue(*late, kWord, 2));
    EXPECT_EQ(valuesOf(watch->output(), kWord), range(0, 2));
}

TEST_F(Faults, AServiceThatIsKilledUnderTrafficIsFoundAgain) {
    constexpr int kRounds = 5;
    constexpr int kValues = 300;  // a round
    const auto roundOf = [](int value) { return (value - 1) / kValues; };
    const auto watch = desk.start("vehiclectl watch " + kWord);
    for (int first = 1; first <= kRounds * kValues; first += kValues) {
        const auto simulator = desk.simulator("--no-initial");
        simulator->write(wordLines(first, first + kValues - 1));
        ASSERT_TRUE(watch->waitForOutput([&](const std::string& output) {
            const std::vector<int> values = valuesOf(output, kWord);
            return !values.empty() && values.back() > first + kValues / 3;
        }));
        simulator->signal(SIGKILL);
        ASSERT_EQ(simulator->wait(), -SIGKILL);
    }
    const std::vector<int> values = valuesOf(watch->output(), kWord);
    for (std::size_t i = 1; i < values.size(); ++i) {
        const bool next = values[i] == values[i - 1] + 1;
        EXPECT_TRUE(next || roundOf(values[i]) == roundOf(values[i - 1]) + 1)
            << values[i] << " after " << values[i - 1] << ", neither the next one nor a current one";
    }
}

TEST_F(Faults, AServiceThatGoesEndsTheWaitForAnEffect) {
    const auto simulator = desk.simulator();
    const auto set = desk.start("vehiclectl set HUT6_MODChgReq 1 --wait-for BCM1_TrunkSts=1 --timeout 1000");
    ASSERT_TRUE(simulator->waitForOutput("HUT6_MODChgReq"));
    simulator->signal(SIGKILL);
    EXPECT_EQ(set->wait(), 3);
    EXPECT_EQ(set->errors().find("vehiclectl: the CAN service has gone; BCM1_TrunkSts is "), 0U) << set->errors();
}

// Three clients: one reads, one is killed and one is stopped while the service broadcasts. The stopped one stands for
// an application that never comes back from its callback.
TEST_F(Faults, ClientsThatDieOrStopHarmNeitherTheServiceNorTheOthers) {
    constexpr int kValues = 20000;
    constexpr int kFillingBytes = 64;  // 20000 of them are more than the queue and the socket's buffer hold
    constexpr long kMostKibibytes = 16L * 1024;
    const auto simulator = desk.simulator("", {{"QVN_HOST_QUEUE_MIB", "1"}});
    const auto well = desk.watch(kWord);
    const auto killed = desk.watch(kWord);
    const auto stopped = desk.watch(kWord);

    stopped->signal(SIGSTOP);
    simulator->write(wordLines(1, kValues / 2, kFillingBytes));
    killed->signal(SIGKILL);
    simulator->write(wordLines(kValues / 2 + 1, kValues, kFillingBytes));
    ASSERT_TRUE(waitForValue(*well, kWord, kValues));
    EXPECT_EQ(valuesOf(well->output(), kWord), range(0, kValues));
    if (!test::kSanitized) {
        EXPECT_LT(simulator->peakKibibytes(), kMostKibibytes);
    }

    stopped->signal(SIGCONT);
    EXPECT_TRUE(waitForValue(*stopped, kWord, kValues)) << "it is back, with the current value";
    EXPECT_EQ(killed->wait(), -SIGKILL);
    simulator->signal(SIGTERM);
    EXPECT_EQ(simulator->wait(), 0);
    EXPECT_NE(simulator->errors().find("has fallen 1 MiB behind"), std::string::npos) << simulator->errors();
}

TEST_F(Faults, TheRuntimeDirectoryMayGoAndComeBack) {
    const auto removeDirectory = [&] {
        const std::string away = desk.directory() + ".away";
        std::filesystem::rename(desk.directory(), away);  // a service makes it again at once
        std::filesystem::remove_all(away);
    };
    auto simulator = desk.simulator();
    const auto watch = desk.watch(kWord);

    removeDirectory();
    simulator->write(wordLine(1));
    EXPECT_TRUE(waitForValue(*watch, kWord, 1)) << "a connection outlives its directory";
    EXPECT_EQ(desk.run("vehiclectl get " + kWord + " --timeout 30").exitCode, 0);

    simulator->signal(SIGKILL);
    ASSERT_EQ(simulator->wait(), -SIGKILL);
    removeDirectory();
    simulator = desk.simulator();
    simulator->write(wordLine(2));
    EXPECT_TRUE(waitForValue(*watch, kWord, 2));
}

TEST_F(Faults, AServiceWithoutDescriptorsKeepsItsClientsAndTakesNewOnesLater) {
    const auto simulator = desk.simulator();
    const auto watch = desk.watch(kWord);
    limitDescriptors(*simulator, kNoMoreDescriptors);
    const auto late = desk.start("vehiclectl watch " + kWord);
    EXPECT_EQ(desk.run("vehiclectl get " + kWord + " --timeout 1").exitCode, 3);
    simulator->write(wordLine(1));
    EXPECT_TRUE(waitForValue(*watch, kWord, 1));
    EXPECT_EQ(valuesOf(late->output(), kWord), std::vector<int>());
    limitDescriptors(*simulator, kEnoughDescriptors);
    EXPECT_TRUE(waitForValue(*late, kWord, 1));
}

TEST_F(Faults, AClientWithoutDescriptorsConnectsLater) {
    const auto watch = desk.start("vehiclectl -v watch " + kWord + " 2>&1");
    ASSERT_TRUE(watch->waitForOutput("not there yet"));
    limitDescriptors(*watch, kNoMoreDescriptors);
    const auto simulator = desk.simulator();
    ASSERT_TRUE(watch->waitForOutput("trying again")) << watch->output();
    limitDescriptors(*watch, kEnoughDescriptors);
    EXPECT_TRUE(watch->waitForOutput("available"));
}

// Whatever the number of descriptors at the start: a result, a complaint or a time-out, but no crash. With the fewest,
// of which the test may have inherited some, the system cannot load the program.
TEST_F(Faults, NoShortageOfDescriptorsAtTheStartIsACrash) {
    constexpr int kEnough = 100;
    const auto simulator = desk.simulator();
    const auto get = [&](int limit, const char* timeout) {
        return desk.run("sh -c 'ulimit -n " + std::to_string(limit) + "; exec vehiclectl get " + kWord + " --timeout " +
                        timeout + "'");
    };
    for (int limit = 4; limit <= 20; ++limit) {
        const auto result = get(limit, "0.1");
        const bool loaded = limit >= 8 || result.errors.find("error while loading") == std::string::npos;
        EXPECT_TRUE(!loaded || result.exitCode == 0 || result.exitCode == 1 || result.exitCode == 3)
            << limit << " descriptors: " << result.exitCode.value_or(-1) << " " << result.errors;
    }
    EXPECT_EQ(get(kEnough, "20").exitCode, 0);
}

}  // namespace
}  // namespace qvn::e2e
