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
        if (change.value("name", "") == name) {
            last = change;
        }
    }
    return last;
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
    EXPECT_EQ(speed, json::parse(R"({"id":"0x21600E1F","name":"ESP_FD2_VehSpd","value":4.05,"unit":"km/h",
                                     "status":"available"})"));
    json button = lastOf(watch->output(), "CSA3_*");
    button.erase("timestamp");
    EXPECT_EQ(button, json::parse(R"({"id":"0x11410A10","name":"CSA3_*","value":1,"direction":1002,
                                      "switch":"CSA3_SeekUpSwtSts","status":"available"})"));
    EXPECT_TRUE(waitForLine(*text, shown("ESP_FD2_VehSpd", "4.05 km/h")));
    EXPECT_TRUE(waitForLine(*text, shown("CSA3_*", "1 dir. 1002")));
    if (!test::kSanitized) {
        EXPECT_LT(text->peakKibibytes(), 12 * 1024) << "an application of all properties";
    }
}

TEST_F(Vehiclectl, GetShowsValueStatusAndAge) {
    const auto simulator = desk.simulator();
    simulator->write("BCM1_DrvDoorSts=1\nHAP_FD3!timeout\nreverse=0\n");
    ASSERT_TRUE(simulator->waitForOutput("reverse released"));

    const auto text = desk.run("vehiclectl get BCM1_DrvDoorSts --timeout 20");
    EXPECT_EQ(text.exitCode, 0) << text.errors;
    EXPECT_EQ(text.output.substr(0, 62), "BCM1_DrvDoorSts                      1 open       available  >")
        << "the service may have had the value for long";

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
                                          "signals":["CSA2_SteerWheelAng"],"unit":"deg",
                                          "description":"steering angle, without its sign"})"));
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
    EXPECT_NE(counted.errors.find("3 changes of 3 properties in "), std::string::npos) << counted.errors;
    const auto start = Clock::now();
    EXPECT_EQ(desk.run("vehiclectl watch --duration 0.3").exitCode, 0);
    EXPECT_GE(secondsSince(start), 0.3);
}

TEST_F(Vehiclectl, TellsThatTheServiceHasGone) {
    auto simulator = desk.simulator();
    const auto text = desk.watch("BCM1_DrvDoorSts");
    const auto ended = desk.start("vehiclectl watch --json --exit-on-loss BCM1_DrvDoorSts");
    ASSERT_TRUE(ended->waitForOutput("{\"event\":\"service\",\"up\":true}"));
    ASSERT_TRUE(text->waitForOutput("CAN service up"));
    simulator->signal(SIGKILL);
    EXPECT_EQ(ended->wait(), 3);
    EXPECT_NE(ended->output().find("{\"event\":\"service\",\"up\":false}"), std::string::npos);
    ASSERT_TRUE(text->waitForOutput("CAN service gone"));
    EXPECT_EQ(desk.run("vehiclectl status --duration 0.1").exitCode, 3);
    EXPECT_EQ(desk.run("vehiclectl doctor").exitCode, 1);
    simulator = desk.simulator();
    ASSERT_TRUE(text->waitForOutput(
        [](const std::string& output) { return output.rfind("CAN service up") > output.find("CAN service gone"); }));
}

TEST_F(Vehiclectl, ExaminesTheService) {
    const auto simulator = desk.simulator();
    simulator->write("HAP_FD3!timeout\nESP_FD2_VehSpd=4.5 every 0.01\n");
    ASSERT_TRUE(simulator->waitForOutput("HAP_FD3 timed out"));
    const auto doctor = desk.run("vehiclectl doctor", {{"QVN_LOG_LEVEL", "3"}});
    EXPECT_EQ(doctor.exitCode, 0) << doctor.output;
    for (const std::string& found : {desk.directory() + " (QVN_HOST_DIR)", std::string("can-service-sim, process "),
                                     std::string("REVERSE_VIDEO 0"), std::string("released"), std::string("level 3")}) {
        EXPECT_NE(doctor.output.find(found), std::string::npos) << doctor.output;
    }
    // A look of a second is too short for a machine that has something else to do meanwhile.
    const auto look = [&](const std::string& command, const std::string& finds) {
        Desk::Result result = desk.run(command);
        for (int again = 0; again < 10 && result.output.find(finds) == std::string::npos; ++again) {
            result = desk.run(command);
        }
        EXPECT_NE(result.output.find(finds), std::string::npos) << result.output << result.errors;
        return result;
    };
    const json status = json::parse(look("vehiclectl status --json", R"("values":150)").output);
    EXPECT_EQ(status["service"], true);
    EXPECT_GT(status["rate"], 0.0);
    const auto hz = look("vehiclectl hz --json 'ESP_FD2_*'", "ESP_FD2_VehSpd");
    EXPECT_EQ(hz.exitCode, 0);
    const json speed = json::parse(hz.output);
    EXPECT_EQ(speed["name"], "ESP_FD2_VehSpd");
    EXPECT_NEAR(speed["rate"].get<double>() * speed["period_ms"].get<double>(), 1000.0, 0.01);
    EXPECT_LE(speed["shortest_ms"], speed["period_ms"]);
    EXPECT_NE(hz.errors.find("1 of 2 properties came less than twice"), std::string::npos) << hz.errors;
}

TEST_F(Vehiclectl, AnswersWithTextAndExitCode) {
    const auto simulator = desk.simulator();
    const std::string notes = desk.file("notes.json", R"({"ESP_FD2_VehSpd": {"unit": "mph"}})");
    const struct {
        std::string command;
        int exitCode;
        std::string text;
    } cases[] = {
        {"get --signals " + notes + " ESP_FD2_VehSpd", 0, " 0 mph "},  // the file is no list of files
        {"info ESP_FD2_VehSpd", 0, "direction    get\n    kind         float"},
        {"info ESP_FD2_VehSpd", 0, "range        0 to 3686.344"},
        {"info DMS_FD1_HeadPosnX", 0, "direction    set\n    range        -500 to 65035"},
        {"hz --duration 0.1 BCM1_TrunkSts", 3, "1 of 1 properties came less than twice in 0.1 s"},
        {"set HUT6_MODChgReq 1 --wait-for BCM1_TrunkSts=1 --timeout 0.5", 3, " after 0.5 s, not 1\n"},
        {"record - --duration 0.1", 0, "service=up\n"},
        {"doctor ESP_FD2_VehSpd", 0, "ESP_FD2_VehSpd 0x21600E1F"},
        {"doctor 0x12345678 ESP_FD2_VehSpd", 1, "no property has the identifier 0x12345678"},
        {"doctor HUT6_CarMdlDispCmd", 1, "HUT6_CarMdlDispCmd can only be set"},
        {"doctor ESP_FD2_VehSpeed 0x1", 1, "a client of these subscribes nothing that it can receive"},
    };
    for (const auto& [command, exitCode, text] : cases) {
        const auto result = desk.run("vehiclectl " + command);
        EXPECT_EQ(result.exitCode, exitCode) << command;
        EXPECT_NE((result.output + result.errors).find(text), std::string::npos)
            << command << ": " << result.output << result.errors;
    }
    const auto doctor = desk.run("vehiclectl doctor 0x12345678 ESP_FD2_VehSpd", {{"QVN_LOG_LEVEL", "6"}});
    EXPECT_EQ(doctor.output.find("nothing that it can receive"), std::string::npos) << doctor.output;
    EXPECT_NE(doctor.output.find("-> set it to a number from 0 to 5\n"), std::string::npos) << doctor.output;
}

TEST_F(Vehiclectl, HzTellsHowLongItLooked) {
    const auto simulator = desk.simulator("-v");
    const auto hz = desk.start("vehiclectl hz BCM1_DrvDoorSts --duration 100");
    ASSERT_TRUE(simulator->waitForOutput("a client subscribed"));
    hz->signal(SIGINT);
    EXPECT_EQ(hz->wait(), 3);
    EXPECT_NE(hz->errors().find("1 of 1 properties came less than twice in "), std::string::npos) << hz->errors();
    EXPECT_EQ(hz->errors().find("100"), std::string::npos) << hz->errors();
}

TEST_F(Vehiclectl, RecordsATraceThatTheSimulatorPlays) {
    const auto record = desk.start("vehiclectl record - BCM1_DrvDoorSts 'CSA3_Seek*'");
    ASSERT_TRUE(record->waitForOutput("(0.000000) service=down\n"));
    auto simulator = desk.simulator();
    const std::string events =
        "BCM1_DrvDoorSts#01\nCSA3_SeekUpSwtSts#0203\nBCM1_DrvDoorSts#01\nCSA3!timeout\nreverse=1\n";
    const std::string current =  // all five switches are one property
        "CSA3_AdjVolDwnSwtSts#00\nCSA3_AdjVolUpSwtSts#00\nCSA3_EnterSwtSts_Mmed#00\nCSA3_SeekDwnSwtSts#00\n"
        "CSA3_SeekUpSwtSts#00\nBCM1_DrvDoorSts#00\n";
    ASSERT_TRUE(record->waitForOutput("BCM1_DrvDoorSts#00")) << "the last of what a subscription returns";
    std::istringstream lines(events);
    for (std::string line; std::getline(lines, line);) {
        simulator->write(line + "\n");
        ASSERT_TRUE(record->waitForOutput(") " + line)) << line;
    }
    simulator->write("BCM1_TrunkSts=1\nCSA3!ok\nservice=down\n");
    ASSERT_TRUE(record->waitForOutput(
        [](const std::string& output) { return output.rfind("service=down") > output.find("service=up"); }));
    simulator.reset();
    record->signal(SIGINT);
    EXPECT_EQ(record->wait(), 0);
    std::string recorded;
    std::istringstream written(record->output());
    for (std::string line; std::getline(written, line);) {
        recorded += line[0] == '(' ? line.substr(line.find(") ") + 2) + "\n" : "";
    }
    EXPECT_EQ(recorded, "service=down\nreverse=0\nservice=up\n" + current + events + "CSA3!ok\nservice=down\n");
    EXPECT_NE(record->errors().find("16 events in "), std::string::npos) << record->errors();

    const std::string trace = desk.file("recorded.trace", record->output());
    const auto played = desk.run("can-service-sim --no-initial --exit-at-end -v --play " + trace);
    EXPECT_EQ(played.exitCode, 0) << played.errors;
    EXPECT_NE(played.output.find("CSA3_SeekUpSwtSts=2"), std::string::npos) << played.output;
    EXPECT_NE(played.output.find("service down"), std::string::npos) << played.output;
    EXPECT_EQ(desk.run("vehiclectl record " + trace).exitCode, 2) << "it would be lost";
    const auto counted = desk.run("vehiclectl record --count 2 --force " + trace);
    EXPECT_EQ(counted.exitCode, 0);
    EXPECT_EQ(counted.errors.substr(0, 12), "2 events in ");
    EXPECT_EQ(desk.run("grep -c . " + trace).output, "3\n");
    EXPECT_EQ(desk.run("vehiclectl record /dev/full --force --duration 0.1").exitCode, 1);
}

TEST_F(Vehiclectl, OnATerminalWatchFillsTheScreenAndTakesKeys) {
    const auto simulator = desk.simulator();
    const auto watch = desk.start("script -qec 'stty rows 8 cols 90; TERM=xterm exec vehiclectl watch' /dev/null");
    ASSERT_TRUE(watch->waitForOutput("CAN service: up"));
    EXPECT_NE(watch->output().find("150 of 150"), std::string::npos);
    EXPECT_EQ(watch->output().find("BCM1_LRDoorSts"), std::string::npos) << "no more than five rows fit";
    watch->write("\033[6~");
    ASSERT_TRUE(watch->waitForOutput("LRDoorSts")) << "a page down";
    watch->write("/RViewMirror");
    ASSERT_TRUE(watch->waitForOutput("RViewMirrorSts"));
    watch->write("\rq");
    EXPECT_EQ(watch->wait(), 0);
    EXPECT_NE(watch->output().find("\033[?1049l"), std::string::npos) << "the terminal is as before";
    EXPECT_NE(watch->output().find(" changes of "), std::string::npos);
    const auto dumb = desk.start("script -qec 'TERM=dumb exec vehiclectl watch --count 1' /dev/null");
    EXPECT_EQ(dumb->wait(), 0);
    EXPECT_EQ(dumb->output().find('\033'), std::string::npos);
}

}  // namespace
}  // namespace qvn::e2e
