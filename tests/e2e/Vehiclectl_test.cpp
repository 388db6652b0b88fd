#include <signal.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <sstream>

#include "e2e/Desk.h"
#include "e2e/WatchOutput.h"
#include "support/Scale.h"

namespace qvn::e2e {
namespace {

using nlohmann::json;
using Clock = std::chrono::steady_clock;
using Vehiclectl = DeskTest;

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

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

/// The seconds in the age column of a property's row, which begins with name and value; -1 when there is none.
double ageIn(const std::string& text, const std::string& nameAndValue) {
    const std::size_t row = text.find(nameAndValue.substr(0, nameAndValue.find(' ')));
    double age = -1.0;
    char unit = '-';
    if (row != std::string::npos) {
        std::sscanf(text.c_str() + row, (nameAndValue + " available %lf %c").c_str(), &age, &unit);
    }
    return unit == 's' ? age : -1.0;
}

TEST_F(Vehiclectl, WatchShowsChangesAsTextAndAsJson) {
    const auto simulator = desk.simulator();
    const auto text = desk.watch("");
    const auto watch = desk.watch("--json ESP_FD2_VehSpd 0x11410A10");
    simulator->write("ESP_FD2_VehSpd=4.05\nCSA3_SeekUpSwtSts=1\n");
    ASSERT_TRUE(watch->waitForOutput("\"value\":1,\"direction\":1002"));
    watch->signal(SIGINT);
    EXPECT_EQ(watch->wait(), 0);
    EXPECT_NE(watch->errors().find(" changes of 2 properties in "), std::string::npos) << watch->errors();

    json speed = lastOf(watch->output(), "ESP_FD2_VehSpd");
    EXPECT_GT(speed["timestamp"], 0);
    speed.erase("timestamp");
    EXPECT_EQ(speed, json::parse(R"({"id":"0x21600E1F","name":"ESP_FD2_VehSpd","value":4.05,"status":"available"})"));
    json button = lastOf(watch->output(), "CSA3_*");
    button.erase("timestamp");
    EXPECT_EQ(button, json::parse(R"({"id":"0x11410A10","name":"CSA3_*","value":1,"direction":1002,
                                      "switch":"CSA3_SeekUpSwtSts","status":"available"})"));
    EXPECT_TRUE(waitForLine(*text, shown("ESP_FD2_VehSpd", "4.05")));
    EXPECT_TRUE(waitForLine(*text, shown("CSA3_*", "1 direction 1002")));
    if (!test::kSanitized) {
        EXPECT_LT(text->peakKibibytes(), 12 * 1024) << "an application of all properties";
    }
}

TEST_F(Vehiclectl, GetShowsValueStatusAndAge) {
    const auto simulator = desk.simulator();
    simulator->write("BCM1_DrvDoorSts=1\nHAP_FD3!timeout\nreverse=0\n");
    ASSERT_TRUE(simulator->waitForOutput("reverse released"));

    const auto start = Clock::now();
    const auto text = desk.run("vehiclectl get BCM1_DrvDoorSts --timeout 20");
    EXPECT_EQ(text.exitCode, 0) << text.errors;
    EXPECT_EQ(text.output.substr(0, 60), "BCM1_DrvDoorSts                      1            available ");
    EXPECT_GE(ageIn(text.output, "BCM1_DrvDoorSts 1"), 0.0) << text.output;
    EXPECT_LE(ageIn(text.output, "BCM1_DrvDoorSts 1"), secondsSince(start)) << "it counts from this process";

    // A client that is slow to subscribe misses the status that the service reports when it connects: no second try
    // within one client, but the next client has its own.
    json state;
    for (int attempt = 0; attempt < 10 && state["status"] != "timed out"; ++attempt) {
        state = lastOf(desk.run("vehiclectl get --json HAP_FD3_RPAS_WorkSts").output, "HAP_FD3_RPAS_WorkSts");
    }
    EXPECT_EQ(state["status"], "timed out");
    EXPECT_EQ(state["value"], 0);
}

TEST_F(Vehiclectl, GetShowsOnlyWhatTheServiceSays) {
    const auto alone = desk.run("vehiclectl get PEPS2_SysPowerMod --timeout 0.3");
    ASSERT_EQ(alone.exitCode, 3);
    EXPECT_EQ(alone.output, "") << "the client makes this value itself while there is no service";

    const std::string trace =
        desk.file("a.trace", "(0) PEPS2_SysPowerMod=1\n(0) BCM8_PASWorkCmd=3\n(0) ESP_FD2_VehSpd=9 every 0.01\n");
    const auto simulator = desk.simulator("- --no-initial --play " + trace);
    const auto start = Clock::now();
    for (int run = 0; run < test::scaled(20); ++run) {
        const auto values =
            desk.run("vehiclectl get --json PEPS2_SysPowerMod BCM8_PASWorkCmd ESP_FD2_VehSpd --timeout 20");
        EXPECT_EQ(lastOf(values.output, "PEPS2_SysPowerMod")["value"], 1) << values.errors;
        EXPECT_EQ(lastOf(values.output, "BCM8_PASWorkCmd")["value"], 3) << values.errors;
        EXPECT_EQ(lastOf(values.output, "ESP_FD2_VehSpd")["value"], 9) << values.errors;
    }
    EXPECT_LT(secondsSince(start), kDeadlineSeconds) << "a signal that never pauses must not hold it up";

    const auto none = desk.run("vehiclectl get BCM1_TrunkSts --timeout 0.3");
    EXPECT_EQ(none.exitCode, 3);
    EXPECT_EQ(none.errors, "vehiclectl: no value of BCM1_TrunkSts within 0.3 s; the CAN service has none\n");
}

TEST_F(Vehiclectl, ListNamesEveryPropertyInBothForms) {
    std::string text;
    const std::vector<json> list = objects(desk.run("vehiclectl list --json").output);
    EXPECT_EQ(list.size(), 235U);
    EXPECT_EQ(list.at(0), json::parse(R"({"id":"0x21600E24","type":"float","direction":"get",
                                          "signals":["CSA2_SteerWheelAng"]})"));
    for (const json& property : list) {
        char columns[40];
        std::snprintf(columns, sizeof columns, "%s  %-5s  %-7s ", property["id"].get<std::string>().c_str(),
                      property["type"].get<std::string>().c_str(), property["direction"].get<std::string>().c_str());
        text += columns;
        for (const std::string name : property["signals"]) {
            text += " " + name;
        }
        text += "\n";
    }
    EXPECT_EQ(desk.run("vehiclectl list").output, text);
    EXPECT_NE(text.find("0x21403033  int32  set      HUT6_CarMdlDispCmd\n"), std::string::npos);
}

TEST_F(Vehiclectl, WatchEndsByItselfAfterACountOrATime) {
    const auto simulator = desk.simulator();
    const auto counted = desk.run("vehiclectl watch --count 3");
    EXPECT_EQ(counted.exitCode, 0);
    EXPECT_EQ(std::count(counted.output.begin(), counted.output.end(), '\n'), 3);
    const auto start = Clock::now();
    EXPECT_EQ(desk.run("vehiclectl watch --duration 0.3").exitCode, 0);
    EXPECT_GE(secondsSince(start), 0.3);
}

TEST_F(Vehiclectl, OnATerminalWatchIsATableThatIsDrawnOverItself) {
    const auto simulator = desk.simulator();
    const auto start = Clock::now();
    const auto watch = desk.start("script -qec 'stty rows 6 cols 80; exec vehiclectl watch' /dev/null");
    ASSERT_TRUE(watch->waitForOutput("available"));
    simulator->write("ESP_FD2_VehSpd=4.5\n");
    for (const double least : {0.0, 0.5}) {  // it grows while nothing changes
        double age = -1.0;
        ASSERT_TRUE(watch->waitForOutput([&](const std::string& output) {
            const std::size_t last = output.rfind("PROPERTY");
            age = last == std::string::npos ? -1.0 : ageIn(output.substr(last), "ESP_FD2_VehSpd 4.5");
            return age >= least;
        })) << watch->output();
        EXPECT_LE(age, secondsSince(start));
    }
    watch->write("\x03");  // Ctrl-C
    EXPECT_EQ(watch->wait(), 0);
    EXPECT_NE(watch->output().find("\033[5A\r"), std::string::npos) << "a heading and four rows are drawn over";
    EXPECT_EQ(watch->output().find("\033[6A"), std::string::npos) << "no more of them fit";
    EXPECT_NE(watch->output().find("\033[?25h"), std::string::npos) << "the cursor is back";
    EXPECT_NE(watch->output().find(" changes of "), std::string::npos);
}

}  // namespace
}  // namespace qvn::e2e
