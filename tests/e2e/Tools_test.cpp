#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "e2e/Process.h"
#include "support/Scale.h"

namespace qvn::e2e {
namespace {

using nlohmann::json;

std::vector<json> objects(const std::string& text) {
    std::vector<json> result;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        result.push_back(json::parse(line));
    }
    return result;
}

json lastOf(const std::string& text, const std::string& name) {
    json last;
    for (const json& change : objects(text)) {
        if (change["name"] == name) {
            last = change;
        }
    }
    return last;
}

TEST(Tools, AValueOfATraceReachesAnApplication) {
    const Desk desk;
    const auto simulator = desk.simulator();
    const auto watch = desk.vehiclectl({"watch", "--json", "ESP_FD2_VehSpd", "0x11410A10"});
    ASSERT_TRUE(watch->waitForOutput("\"name\":\"ESP_FD2_VehSpd\",\"value\":0"));
    simulator->write("ESP_FD2_VehSpd=4.5\nCSA3_SeekUpSwtSts=1\n");
    ASSERT_TRUE(watch->waitForOutput("\"value\":1,\"direction\":1002"));
    watch->signal(SIGINT);
    EXPECT_EQ(watch->wait(), 0);

    const json speed = lastOf(watch->output(), "ESP_FD2_VehSpd");
    EXPECT_EQ(speed["id"], "0x21600E1F");
    EXPECT_EQ(speed["value"], 4.5);
    EXPECT_EQ(speed["status"], "available");
    EXPECT_GT(speed["timestamp"], 0);
    const json button = lastOf(watch->output(), "CSA3_*");
    EXPECT_EQ(button["value"], 1);
    EXPECT_EQ(button["direction"], 1002);
    EXPECT_NE(watch->errors().find(" changes of 2 properties in "), std::string::npos) << watch->errors();
}

TEST(Tools, GetShowsValueStatusAndAge) {
    const Desk desk;
    const auto simulator = desk.simulator();
    simulator->write("BCM1_DrvDoorSts=1\nHAP_FD3!timeout\nreverse=0\n");
    ASSERT_TRUE(simulator->waitForOutput("reverse released"));

    const auto text = desk.runVehiclectl({"get", "BCM1_DrvDoorSts"});
    EXPECT_EQ(text.exitCode, 0) << text.errors;
    EXPECT_EQ(text.output.substr(0, 60), "BCM1_DrvDoorSts                      1            available ");

    // A client that is slow to subscribe misses the status that the service reports when it connects: no second try
    // within one client, but the next client has its own.
    json state;
    for (int attempt = 0; attempt < 10 && state["status"] != "timed out"; ++attempt) {
        state = lastOf(desk.runVehiclectl({"get", "--json", "HAP_FD3_RPAS_WorkSts"}).output, "HAP_FD3_RPAS_WorkSts");
    }
    EXPECT_EQ(state["status"], "timed out");
    EXPECT_EQ(state["value"], 0);
}

TEST(Tools, GetShowsOnlyWhatTheServiceSays) {
    const Desk desk;
    const auto alone = desk.runVehiclectl({"get", "PEPS2_SysPowerMod", "--timeout", "0.3"});
    ASSERT_EQ(alone.exitCode, 3);
    EXPECT_EQ(alone.output, "") << "the client makes this value itself while there is no service";

    const std::string trace =
        desk.file("a.trace", "(0) PEPS2_SysPowerMod=1\n(0) BCM8_PASWorkCmd=3\n(0) ESP_FD2_VehSpd=9 every 0.01\n");
    const auto simulator = desk.simulator({"--no-initial", "--play", trace, "-"});
    const auto start = std::chrono::steady_clock::now();
    for (int run = 0; run < test::scaled(20); ++run) {
        const auto values = desk.runVehiclectl(
            {"get", "--json", "PEPS2_SysPowerMod", "BCM8_PASWorkCmd", "ESP_FD2_VehSpd", "--timeout", "20"});
        EXPECT_EQ(lastOf(values.output, "PEPS2_SysPowerMod")["value"], 1) << values.errors;
        EXPECT_EQ(lastOf(values.output, "BCM8_PASWorkCmd")["value"], 3) << values.errors;
        EXPECT_EQ(lastOf(values.output, "ESP_FD2_VehSpd")["value"], 9) << values.errors;
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(kDeadlineSeconds))
        << "a signal that never pauses must not hold it up";

    const auto none = desk.runVehiclectl({"get", "BCM1_TrunkSts", "--timeout", "0.3"});
    EXPECT_EQ(none.exitCode, 3);
    EXPECT_EQ(none.errors, "vehiclectl: no value of BCM1_TrunkSts within 0.3 s; the CAN service has none\n");
}

TEST(Tools, ListNamesEveryProperty) {
    const Desk desk;
    const auto list = objects(desk.runVehiclectl({"list", "--json"}).output);
    ASSERT_EQ(list.size(), 235U);
    EXPECT_EQ(list[0], json::parse(R"({"id":"0x21600E24","type":"float","direction":"get",
                                       "signals":["CSA2_SteerWheelAng"]})"));
}

TEST(Tools, ASetIsDecodedAndAnsweredByItsRule) {
    const Desk desk;
    const auto simulator = desk.simulator(
        {"--rules", desk.file("my.rules", "DMS_FD1_HeadYawAng=-75 -> ESP_FD2_VehSpd=9 after 0.05\n"), "-"});

    const auto answered = desk.runVehiclectl(
        {"set", "HUT6_CarMdlDispCmd", "1", "--wait-for", "HAP_FD2_CarMdlDispSts=1", "--timeout", "20"});
    EXPECT_EQ(answered.exitCode, 0) << answered.errors;
    EXPECT_TRUE(simulator->waitForOutput("set HUT6_CarMdlDispCmd=1  (01)"));
    EXPECT_TRUE(simulator->waitForOutput("answer HAP_FD2_CarMdlDispSts=1"));

    const auto mapped =
        desk.runVehiclectl({"set", "DMS_FD1_HeadYawAng", "-75", "--wait-for", "ESP_FD2_VehSpd=9", "--timeout", "20"});
    EXPECT_EQ(mapped.exitCode, 0) << mapped.errors;

    const auto unanswered =
        desk.runVehiclectl({"set", "HUT32_XLvl", "300", "--wait-for", "HAP_FD2_CarMdlDispSts=2", "--timeout", "0.2"});
    EXPECT_EQ(unanswered.exitCode, 3);
    EXPECT_EQ(unanswered.errors, "vehiclectl: HAP_FD2_CarMdlDispSts is 1 after 0.2 s, not 2\n");
    EXPECT_TRUE(simulator->waitForOutput("set HUT32_XLvl=300  (012C)"));
}

TEST(Tools, ASetNeedsNoValueOfTheServiceAndSeesAPulse) {
    const Desk desk;
    const std::string rules = desk.file("pulse.rules",
                                        "HUT32_XLvl=1 -> ESP_FD2_VehSpd=9\n"
                                        "HUT32_XLvl=1 -> ESP_FD2_VehSpd=0 after 0.02\n");
    const auto simulator = desk.simulator({"--no-initial", "--rules", rules});
    const auto pulse = desk.runVehiclectl({"set", "HUT32_XLvl", "1", "--wait-for", "ESP_FD2_VehSpd=9"});
    EXPECT_EQ(pulse.exitCode, 0) << pulse.errors;

    const auto invented =
        desk.runVehiclectl({"set", "HUT32_XLvl", "2", "--wait-for", "PEPS2_SysPowerMod=2", "--timeout", "0.2"});
    EXPECT_EQ(invented.errors, "vehiclectl: PEPS2_SysPowerMod is - after 0.2 s, not 2\n");
}

TEST(Tools, ACycleThatStopsTimesItsMessageOut) {
    const Desk desk;
    const auto simulator = desk.simulator();
    const auto watch = desk.vehiclectl({"watch", "ESP_FD2_VehSpd"});
    ASSERT_TRUE(watch->waitForOutput("available"));
    simulator->write("ESP_FD2_VehSpd=4.5 every 0.02\nESP_FD2_VehSpd=9\n");
    ASSERT_TRUE(watch->waitForOutput(" 9 "));
    simulator->write("ESP_FD2_VehSpd!stop\n");
    ASSERT_TRUE(watch->waitForOutput("timed out"));
    simulator->write("ESP_FD2_VehSpd=18 every 0.02 for 0.06\n");
    ASSERT_TRUE(watch->waitForOutput([](const std::string& output) {
        const std::size_t restored = output.find(" 18 ");
        return restored != std::string::npos && output.find("timed out", restored) != std::string::npos;
    })) << watch->output();
}

TEST(Tools, ReverseBeforeTheServiceReachesAnApplication) {
    const Desk desk;
    const std::string trace = desk.file("a.trace", "(0) service=down\n(0) reverse=0\n(0) BCM1_TrunkSts=1\n");
    const auto simulator = desk.simulator({"--play", trace, "-"});
    ASSERT_TRUE(simulator->waitForOutput("reverse released"));
    const auto watch = desk.vehiclectl({"watch", "BCM8_PASWorkCmd", "BCM1_TrunkSts"});
    ASSERT_TRUE(watch->waitForOutput("BCM8_PASWorkCmd                      0 "));
    simulator->write("reverse=1\n");
    ASSERT_TRUE(watch->waitForOutput("BCM8_PASWorkCmd                      1 "));
    EXPECT_EQ(watch->output().find("BCM1_TrunkSts"), std::string::npos);
    simulator->write("service=up\n");
    EXPECT_TRUE(watch->waitForOutput("BCM1_TrunkSts                        1 "));
}

TEST(Tools, WatchEndsByItselfAfterACountOrATime) {
    const Desk desk;
    const auto simulator = desk.simulator();
    const auto counted = desk.runVehiclectl({"watch", "--count", "3"});
    EXPECT_EQ(counted.exitCode, 0);
    EXPECT_EQ(std::count(counted.output.begin(), counted.output.end(), '\n'), 3);
    EXPECT_EQ(desk.runVehiclectl({"watch", "--duration", "0.1"}).exitCode, 0);
}

TEST(Tools, OnATerminalWatchIsATableThatIsDrawnOverItself) {
    const Desk desk;
    const auto simulator = desk.simulator();
    setenv("QVN_HOST_DIR", desk.directory().c_str(), 1);
    winsize size{};
    size.ws_row = 6;
    size.ws_col = 80;
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, &size);
    ASSERT_GE(child, 0);
    if (child == 0) {
        execl(QVN_VEHICLECTL, QVN_VEHICLECTL, "watch", static_cast<char*>(nullptr));
        _exit(127);
    }
    unsetenv("QVN_HOST_DIR");
    std::string screen;
    bool changed = false;
    bool stopped = false;
    char buffer[4096];
    pollfd readable{terminal, POLLIN, 0};
    while (poll(&readable, 1, kDeadlineSeconds * 1000) > 0) {
        const ssize_t count = read(terminal, buffer, sizeof buffer);
        if (count <= 0) {
            break;
        }
        screen.append(buffer, static_cast<std::size_t>(count));
        if (!changed && screen.find("available") != std::string::npos) {
            simulator->write("ESP_FD2_VehSpd=4.5\n");
            changed = true;
        }
        if (!stopped && screen.find("ESP_FD2_VehSpd                       4.5") != std::string::npos) {
            stopped = write(terminal, "\x03", 1) == 1;  // Ctrl-C
        }
    }
    close(terminal);  // hangs the program up if it is still there
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_NE(screen.find("\033[5A\r"), std::string::npos) << "a heading and the four rows that fit are drawn over";
    EXPECT_EQ(screen.find("\033[6A"), std::string::npos);
    EXPECT_NE(screen.find("\033[?25h"), std::string::npos) << "the cursor is back";
    EXPECT_NE(screen.find(" changes of "), std::string::npos);
}

TEST(Tools, AReaderThatGoesAwayEndsAWatchQuietly) {
    const Desk desk;
    const auto simulator = desk.simulator();
    const std::string command = std::string(QVN_VEHICLECTL) + " watch | head -n 1";
    const auto result = desk.run({"/bin/sh", "-c", command});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(std::count(result.output.begin(), result.output.end(), '\n'), 1);
    EXPECT_EQ(result.errors.find("vehiclectl:"), std::string::npos) << result.errors;
}

TEST(Tools, TheParkingTracePlaysThroughToItsEnd) {
    const Desk desk;
    const auto watch = desk.vehiclectl({"watch", "HAP_FD1_APS_ProcBar", "HAP_FD3_RPAS_ObjRLCornrAr1"});
    const auto played = desk.runSimulator({"--play", QVN_PARKING_TRACE, "--speed", "10", "--exit-at-end"});
    EXPECT_EQ(played.exitCode, 0) << played.errors;
    EXPECT_NE(played.output.find("HAP_FD3 timed out"), std::string::npos) << played.output;
    EXPECT_NE(played.output.find("HAP_FD3 ok"), std::string::npos) << played.output;
    EXPECT_TRUE(watch->waitForOutput("HAP_FD1_APS_ProcBar                  100 ")) << watch->output();
}

TEST(Tools, TheSimulatorEndsWithItsInputOrASignal) {
    const Desk desk;
    auto byInput = desk.simulator();
    byInput->write("reverse=1\n");
    byInput->closeInput();
    EXPECT_EQ(byInput->wait(), 0);
    std::ifstream line(desk.directory() + "/gpio/87");
    std::string level;
    EXPECT_TRUE(std::getline(line, level));
    EXPECT_EQ(level, "0");

    for (const int number : {SIGINT, SIGTERM}) {
        auto background = desk.simulator();
        background->closeInput();
        background->signal(number);
        EXPECT_EQ(background->wait(), 0);
    }
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

TEST(Tools, AnApplicationStaysSmall) {
    if (test::kSanitized) {
        GTEST_SKIP() << "a sanitizer needs memory of its own";
    }
    const Desk desk;
    const auto simulator = desk.simulator();
    const auto watch = desk.vehiclectl({"watch"});
    ASSERT_TRUE(watch->waitForOutput("BCM3_DoorLockSts"));
    EXPECT_LT(peakKibibytes(*watch), 12 * 1024);
}

TEST(Tools, ALoopedTraceDoesNotGrowTheSimulator) {
    constexpr std::size_t kJournalOfARound = 60;
    constexpr int kMostKibibytes = 512;
    if (test::kSanitized) {
        GTEST_SKIP() << "a sanitizer needs memory of its own";
    }
    const Desk desk;
    const std::string trace = desk.file("a.trace",
                                        "(0) ESP_FD2_VehSpd=4.5 every 1000\n"
                                        "(0) CSA2_SteerWheelAng=3 every 0.001 for 0.002\n"
                                        "(0.02) BCM1_DrvDoorSts=1\n");
    const auto simulator = desk.simulator({"--loop", "--speed", "100", "--play", trace});
    const auto rounds = [&](std::size_t count) {
        return simulator->waitForOutput(
            [&](const std::string& journal) { return journal.size() > count * kJournalOfARound; });
    };
    ASSERT_TRUE(rounds(500));
    const long before = peakKibibytes(*simulator);
    ASSERT_TRUE(rounds(3500));
    EXPECT_LT(peakKibibytes(*simulator), before + kMostKibibytes);
}

}  // namespace
}  // namespace qvn::e2e
