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
    Desk::Result end(const std::string& way, const std::string& logLevel = "1") const {
        // In a child of fork the stacks are missing that hold what the leak check then misses.
        return desk.run("env ASAN_OPTIONS=detect_leaks=0 QVN_LOG_LEVEL=" + logLevel + " ending_application " + way);
    }
    void endsCleanly(const std::string& way, int runs) const {
        for (int i = 0; i < qvn::test::scaled(runs); ++i) {
            const Desk::Result result = end(way);
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
    for (const char* way : {"return", "exit-on-thread", "exit-in-callback", "exit-in-callback-beside-subscribe",
                            "exit-on-bus-thread", "exit-beside-get-instance"}) {
        endsCleanly(way, 12);
    }
    for (const char* way :
         {"slow-callback", "fork-and-fail-to-exec", "fork-in-callback", "set-in-destructor", "own-client",
          "end-thread-in-callback", "session-end-thread", "session-end-executors-thread"}) {
        endsCleanly(way, 4);
    }
    for (const char* way : {"session-static", "session-on-heap", "session-exit-in-handler", "session-exit-in-place",
                            "session-fork", "session-fork-in-handler", "session-awaits", "session-awaits-in-handler"}) {
        endsCleanly(way, 6);
    }
    service.reset();
    endsCleanly("return-without-service", 4);
}

TEST_F(ProcessEnd, WaitsForNobodyLongerThanTwoSeconds) {
    const struct {
        const char* way;
        const char* logLevel;
        int exitCode;
        const char* output;
        const char* complaint;
    } cases[] = {
        {"callback-waits-for-main", "1", kExitCode, "", "a callback of the application is still running"},
        {"session-handler-waits-for-main", "1", kExitCode, "", "a callback of the application is still running"},
        {"session-component-waits-for-main", "1", kExitCode, "", "a callback of the application is still running"},
        {"log-nobody-reads", "1", EXIT_FAILURE, "one, two", ""},
        {"log-nobody-reads", "3", EXIT_FAILURE, "one, two", ""}};
    for (const auto& [way, logLevel, exitCode, output, complaint] : cases) {
        const auto begin = std::chrono::steady_clock::now();
        const Desk::Result result = end(way, logLevel);
        EXPECT_EQ(result.exitCode, exitCode) << way;
        EXPECT_EQ(result.output, output) << way;
        EXPECT_NE(result.errors.find(complaint), std::string::npos) << way << result.errors;
        const double seconds = Seconds(std::chrono::steady_clock::now() - begin).count();
        EXPECT_GE(seconds, 1.9) << way;
        EXPECT_LT(seconds, 10) << way;
    }
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
