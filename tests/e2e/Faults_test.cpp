#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "e2e/Process.h"
#include "e2e/WatchOutput.h"
#include "support/Scale.h"

namespace qvn::e2e {
namespace {

constexpr rlim_t kNoMoreDescriptors = 3;  // those that are open stay open
constexpr rlim_t kEnoughDescriptors = 1024;

void limitDescriptors(const Process& process, rlim_t limit) {
    const rlimit limits{limit, kEnoughDescriptors};
    ASSERT_EQ(prlimit(process.pid(), RLIMIT_NOFILE, &limits, nullptr), 0);
}

long peakKibibytes(const Process& process) {
    std::ifstream status("/proc/" + std::to_string(process.pid()) + "/status");
    long kibibytes = 0;
    for (std::string word; status >> word;) {
        if (word == "VmHWM:") {
            status >> kibibytes;
        }
    }
    return kibibytes;
}

TEST(Faults, AServiceThatIsStoppedForSecondsGoesOnWithItsClients) {
    const Desk desk;
    const auto simulator = desk.simulator();
    const auto watch = desk.vehiclectl({"watch", kWord});
    ASSERT_TRUE(watch->waitForOutput("available"));
    simulator->signal(SIGSTOP);
    const auto late = desk.vehiclectl({"watch", kWord});
    simulator->write(wordLine(1) + wordLine(2));
    EXPECT_EQ(desk.runVehiclectl({"get", kWord, "--timeout", "2"}).exitCode, 3);
    EXPECT_EQ(valuesOf(watch->output(), kWord), std::vector<int>{0});
    simulator->signal(SIGCONT);
    EXPECT_TRUE(waitForValue(*watch, kWord, 2));
    EXPECT_TRUE(waitForValue(*late, kWord, 2));
    EXPECT_EQ(valuesOf(watch->output(), kWord), range(0, 2));
}

// Three clients: one reads, one is killed and one is stopped while the service broadcasts. The stopped one stands for
// an application that never comes back from its callback.
TEST(Faults, ClientsThatDieOrStopHarmNeitherTheServiceNorTheOthers) {
    constexpr int kQueueMebibytes = 1;
    constexpr int kValues = 20000;
    constexpr int kFillingBytes = 64;  // 20000 of them are more than the queue and the socket's buffer hold
    constexpr long kMostKibibytes = 16 * 1024;
    const Desk desk;
    setenv("QVN_HOST_QUEUE_MIB", std::to_string(kQueueMebibytes).c_str(), 1);
    const auto simulator = desk.simulator();
    unsetenv("QVN_HOST_QUEUE_MIB");
    const auto well = desk.vehiclectl({"watch", kWord});
    const auto killed = desk.vehiclectl({"watch", kWord});
    const auto stopped = desk.vehiclectl({"watch", kWord});
    for (Process* const client : {well.get(), killed.get(), stopped.get()}) {
        ASSERT_TRUE(client->waitForOutput("available"));
    }

    stopped->signal(SIGSTOP);
    for (int value = 1; value <= kValues; value += 1000) {
        std::string burst;
        for (int i = 0; i < 1000; ++i) {
            burst += wordLine(value + i, kFillingBytes);
        }
        simulator->write(burst);
        if (value > kValues / 2) {
            killed->signal(SIGKILL);
        }
    }
    ASSERT_TRUE(waitForValue(*well, kWord, kValues));
    EXPECT_EQ(valuesOf(well->output(), kWord), range(0, kValues));
    if (!test::kSanitized) {
        EXPECT_LT(peakKibibytes(*simulator), kMostKibibytes);
    }

    stopped->signal(SIGCONT);
    EXPECT_TRUE(waitForValue(*stopped, kWord, kValues)) << "it is back, with the current value";
    EXPECT_EQ(killed->wait(), -SIGKILL);
    simulator->signal(SIGTERM);
    EXPECT_EQ(simulator->wait(), 0);
    EXPECT_NE(simulator->errors().find("has fallen 1 MiB behind"), std::string::npos) << simulator->errors();
}

TEST(Faults, TheRuntimeDirectoryMayGoAndComeBack) {
    const Desk desk;
    const std::string away = desk.directory() + ".away";
    const auto removeDirectory = [&] {
        std::filesystem::rename(desk.directory(), away);  // a service makes it again at once
        std::filesystem::remove_all(away);
    };
    auto simulator = desk.simulator();
    const auto watch = desk.vehiclectl({"watch", kWord});
    ASSERT_TRUE(watch->waitForOutput("available"));

    removeDirectory();
    simulator->write(wordLine(1));
    EXPECT_TRUE(waitForValue(*watch, kWord, 1)) << "a connection outlives its directory";
    EXPECT_EQ(desk.runVehiclectl({"get", kWord, "--timeout", "30"}).exitCode, 0);

    simulator->signal(SIGKILL);
    ASSERT_EQ(simulator->wait(), -SIGKILL);
    removeDirectory();
    simulator = desk.simulator();
    simulator->write(wordLine(2));
    EXPECT_TRUE(waitForValue(*watch, kWord, 2));
}

TEST(Faults, AServiceWithoutDescriptorsKeepsItsClientsAndTakesNewOnesLater) {
    const Desk desk;
    const auto simulator = desk.simulator();
    const auto watch = desk.vehiclectl({"watch", kWord});
    ASSERT_TRUE(watch->waitForOutput("available"));
    limitDescriptors(*simulator, kNoMoreDescriptors);
    const auto late = desk.vehiclectl({"watch", kWord});
    EXPECT_EQ(desk.runVehiclectl({"get", kWord, "--timeout", "1"}).exitCode, 3);
    simulator->write(wordLine(1));
    EXPECT_TRUE(waitForValue(*watch, kWord, 1));
    EXPECT_EQ(late->output(), "");
    limitDescriptors(*simulator, kEnoughDescriptors);
    EXPECT_TRUE(waitForValue(*late, kWord, 1));
}

TEST(Faults, AClientWithoutDescriptorsConnectsLater) {
    const Desk desk;
    const std::string command = std::string("exec ") + QVN_VEHICLECTL + " -v watch " + kWord + " 2>&1";
    Process watch({"/bin/sh", "-c", command}, {{"QVN_HOST_DIR", desk.directory()}});
    ASSERT_TRUE(watch.waitForOutput("construct..."));
    limitDescriptors(watch, kNoMoreDescriptors);
    const auto simulator = desk.simulator();
    ASSERT_TRUE(watch.waitForOutput("trying again")) << watch.output();
    limitDescriptors(watch, kEnoughDescriptors);
    EXPECT_TRUE(watch.waitForOutput("available"));
}

// Whatever the number of descriptors at the start: a result, a complaint or a time-out, but no crash.
TEST(Faults, NoShortageOfDescriptorsAtTheStartIsACrash) {
    const Desk desk;
    const auto simulator = desk.simulator();
    for (int limit = 4; limit <= 20; ++limit) {
        const std::string command =
            "ulimit -n " + std::to_string(limit) + "; exec " + QVN_VEHICLECTL + " get " + kWord + " --timeout 0.1";
        const auto result = desk.run({"/bin/sh", "-c", command});
        EXPECT_TRUE(result.exitCode == 0 || result.exitCode == 1 || result.exitCode == 3 || result.exitCode == 127)
            << limit << " descriptors: " << result.exitCode << " " << result.errors;
    }
}

}  // namespace
}  // namespace qvn::e2e
