#include <chrono>
#include <csignal>

#include "e2e/Desk.h"
#include "support/Scale.h"

namespace {

using namespace qvn::e2e;
using Seconds = std::chrono::duration<double>;

constexpr int kExitCode = 7;

/// A service that sends values all the time, and applications that end.
class ProcessEnd : public DeskTest {
protected:
    void endsCleanly(const std::string& way) const {
        for (int i = 0; i < qvn::test::scaled(20); ++i) {
            // In a child of fork the stacks are missing that hold what the leak check then misses.
            const Desk::Result result = desk.run("env ASAN_OPTIONS=detect_leaks=0 ending_application " + way);
            ASSERT_EQ(result.exitCode, kExitCode) << way << ", run " << i << ": " << result.errors;
            ASSERT_EQ(result.output, "") << way;
            ASSERT_EQ(result.errors.find("the process ends without it"), std::string::npos) << way << result.errors;
        }
    }

    const std::string trace =
        desk.file("values.trace", "(0) ESP_FD2_VehSpd=4.5 every 0.002\n(0) BCM1_DrvDoorSts=1 every 0.003\n");
    std::unique_ptr<Process> service = desk.simulator("--play " + trace);
};

TEST_F(ProcessEnd, IsCleanOnEveryWayOut) {
    for (const char* way :
         {"return", "return-without-service", "exit-on-thread", "exit-in-callback", "exit-in-callback-beside-subscribe",
          "exit-on-bus-thread", "slow-callback", "fork-and-fail-to-exec", "set-in-destructor"}) {
        endsCleanly(way);
    }
    service.reset();
    endsCleanly("return-without-service");
}

TEST_F(ProcessEnd, DoesNotWaitForeverForACallbackThatWaitsForMain) {
    const auto begin = std::chrono::steady_clock::now();
    const Desk::Result result = desk.run("ending_application callback-waits-for-main");
    EXPECT_EQ(result.exitCode, kExitCode);
    EXPECT_NE(result.errors.find("a callback of the application is still running"), std::string::npos) << result.errors;
    EXPECT_GE(Seconds(std::chrono::steady_clock::now() - begin).count(), 1.9);
}

TEST_F(ProcessEnd, DoesNotWaitForAServiceThatIsStopped) {
    const auto sender = desk.start("ending_application many-sets");
    ASSERT_TRUE(sender->waitForOutput("ready\n"));
    service->signal(SIGSTOP);
    sender->write("\n");
    EXPECT_EQ(sender->wait(), kExitCode) << sender->errors();
    service->signal(SIGCONT);
}

}  // namespace
