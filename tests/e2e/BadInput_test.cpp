#include <algorithm>

#include "e2e/Desk.h"
#include "e2e/WatchOutput.h"

namespace qvn::e2e {
namespace {

using BadInput = DeskTest;

TEST_F(BadInput, IsToldInOneLine) {
    const std::string trace = desk.file("bad.trace", "# one\n(0.0) reverse=1\n(0.5) ESP_FD2_VehSpd=fast\n");
    const std::string rules = desk.file("bad.rules", "HUT6_CarMdlDispCmd => HAP_FD2_CarMdlDispSts\n");
    const std::string still = desk.file("still.trace", "(0) reverse=1\n");
    const struct {
        std::string command;
        int exitCode;
        std::string error;
    } cases[] = {
        {"vehiclectl wach", 2, "unknown command 'wach'; did you mean watch?"},
        {"vehiclectl get --jsno", 2, "unknown option '--jsno'; did you mean --json?"},
        {"vehiclectl --json list", 2,
         "'--json' belongs to a command; expected it after that, as in 'vehiclectl COMMAND --json'; see 'vehiclectl "
         "list "
         "--help'"},
        {"vehiclectl get ESP_FD2_VehSpd --timeout 1 --timeout 2", 2,
         "--timeout may be given only once; see 'vehiclectl get --help'"},
        {"vehiclectl status now", 2, "'now' is not expected here; see 'vehiclectl status --help'"},
        {"vehiclectl watch --duration", 2, "--duration needs a value; see 'vehiclectl watch --help'"},
        {"vehiclectl watch --count 1.5", 2,
         "--count: '1.5' is not a whole number; expected a whole number from 1 to 1000000000; see 'vehiclectl watch "
         "--help'"},
        {"vehiclectl watch 'HAP_FD33*'", 2,
         "no property that the vehicle reports matches 'HAP_FD33*'; 'vehiclectl list' shows them all"},
        {"can-service-sim a.trace", 2, "'a.trace' is not expected here; a trace is played by --play a.trace"},
        {"can-service-sim --speed 0x10", 2,
         "--speed: '0x10' is not a decimal number; expected a number from 0.001 to 1000; see 'can-service-sim --help'"},
        {"vehiclectl get VehSpd", 2, "unknown property 'VehSpd'; did you mean ESP_FD2_VehSpd or ESP_FD2_VehSpdVld?"},
        {"vehiclectl watch 0x12345678", 2,
         "no property has the identifier 0x12345678; 'vehiclectl list' shows them all"},
        {"vehiclectl get HUT6_CarMdlDispCmd", 2, "HUT6_CarMdlDispCmd can only be set; the vehicle never reports it"},
        {"vehiclectl set ESP_FD2_VehSpd 1", 2, "ESP_FD2_VehSpd is only reported by the vehicle; it cannot be set"},
        {"vehiclectl set HUT6_CarMdlDispCmd 300", 2,
         "value 300 does not fit HUT6_CarMdlDispCmd; expected a whole number from 0 to 255"},
        {"vehiclectl set HUT6_CarMdlDispCmd on", 2, "'on' is not a number; expected the value to set"},
        {"vehiclectl set HUT6_CarMdlDispCmd 1 --wait-for ESP_FD2_VehSpd", 2,
         "'ESP_FD2_VehSpd' is nothing to wait for; expected PROPERTY=VALUE"},
        {"vehiclectl get ESP_FD2_VehSpd --timeout 0.1", 3,
         "no value of ESP_FD2_VehSpd within 0.1 s; is the CAN service running?"},
        {"vehiclectl set HUT6_CarMdlDispCmd 1 --timeout 0.1", 3,
         "the CAN service did not appear within 0.1 s; nothing was set"},
        {"can-service-sim --play " + trace, 2, trace + ":3: 'fast' is not a number; expected a physical value"},
        {"can-service-sim --play /nonexistent.trace", 2, "cannot open /nonexistent.trace"},
        {"can-service-sim --rules " + rules, 2,
         rules + ":1: 'HUT6_CarMdlDispCmd => HAP_FD2_CarMdlDispSts' is not a rule; " +
             "expected SET[=VALUE] -> SIGNAL[=VALUE] [after SECONDS]"},
        {"can-service-sim --loop --play " + still, 2, still + " is over at once; --loop needs a trace that takes time"},
    };
    for (const auto& [command, exitCode, error] : cases) {
        const auto result = desk.run(command);
        EXPECT_EQ(result.exitCode, exitCode) << command;
        EXPECT_EQ(result.errors, command.substr(0, command.find(' ')) + ": " + error + "\n");
        EXPECT_EQ(result.output, "") << "a trace is checked as a whole before it plays";
    }
}

TEST_F(BadInput, ManualPagesSayWhatHelpSays) {
    for (const std::string tool : {"can-service-sim", "vehiclectl"}) {
        const std::string page = QVN_MAN_DIR "/" + tool + ".1";
        const auto drift = desk.run("bash -c '" QVN_MAN_DIR "/../../scripts/man-page " + tool + " " + page +
                                    " | diff " + page + " -'");
        EXPECT_EQ(drift.output + drift.errors, "") << "scripts/generate makes " << page << " anew";
    }
}

TEST_F(BadInput, CompletionOffersWhatFits) {
    const std::string notes = desk.file("notes.json", R"({"HUT6_CarMdlDispCmd": {"values": {"0": "off", "1": "on"}}})");
    const std::pair<std::string, const char*> cases[] = {
        {"vehiclectl wat", "watch"},
        {"vehiclectl --signals x wat", "watch"},
        {"vehiclectl --wa", ""},  // an option of a command only
        {"vehiclectl watch --exit", "--exit-on-loss"},
        {"vehiclectl get ESP_FD2_VehSpdV", "ESP_FD2_VehSpdVld"},
        {"vehiclectl get HUT6_CarMdlD", ""},
        {"vehiclectl set HUT6_CarMdlD", "HUT6_CarMdlDispCmd"},
        {"vehiclectl record BCM1_Trunk", ""},  // a file
        {"vehiclectl record a.trace BCM1_Trunk", "BCM1_TrunkSts"},
        {"vehiclectl set A 1 --wait-for BCM1_Trunk", "BCM1_TrunkSts"},
        {"vehiclectl set A 1 --wait-for BCM1_DrvDoorSts = op", "open"},
        {"vehiclectl --signals " + notes + " set HUT6_CarMdlDispCmd o", "off"},
        {"can-service-sim --exit", "--exit-at-end"}};
    for (const auto& [words, completed] : cases) {
        const std::string tool = words.substr(0, words.find(' '));
        const std::string function = tool == "vehiclectl" ? "_vehiclectl" : "_can_service_sim";
        EXPECT_EQ(desk.run("bash -c '. " QVN_COMPLETION_DIR "/" + tool + "; COMP_WORDS=(" + words +
                           "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); " + function + " " + tool + "; echo $COMPREPLY'")
                      .output,
                  std::string(completed) + "\n")
            << words;
    }
}

TEST_F(BadInput, UsageIsExplained) {
    for (const char* const command :
         {"vehiclectl", "vehiclectl get", "vehiclectl fetch", "vehiclectl watch --count 0",
          "vehiclectl get --timeout x y", "vehiclectl get ESP_FD2_VehSpd --timeout nan",
          "vehiclectl watch --duration nan", "can-service-sim --loop", "can-service-sim --speed 0",
          "can-service-sim --speed nan", "can-service-sim --nonsense", "can-service-sim -q -v"}) {
        const auto result = desk.run(command);
        EXPECT_EQ(result.exitCode, 2) << command;
        EXPECT_NE(result.errors, "") << command;
    }
}

TEST_F(BadInput, OfTheClientsConfigurationEndsVehiclectlAtOnce) {
    desk.file("vehicle.json", "{\"config_qvn\": ");
    const char* const error = "vehiclectl: the vehicle client could not start; its log says why, more of it with -v\n";
    for (const char* const command : {"get ESP_FD2_VehSpd", "watch", "set HUT6_CarMdlDispCmd 1"}) {
        const auto result = desk.run(std::string("vehiclectl ") + command);
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_NE(result.errors.find(error), std::string::npos) << result.errors;
        EXPECT_NE(result.errors.find("vehicle.json"), std::string::npos) << result.errors;
    }
}

TEST_F(BadInput, OnStandardInputEndsAScriptedSimulator) {
    const auto simulator = desk.simulator();
    simulator->write("ESP_FD2_VehSpd=1\nreverse=maybe\nESP_FD2_VehSpd=2\n");
    EXPECT_EQ(simulator->wait(), 2);
    EXPECT_EQ(simulator->errors(), "can-service-sim: stdin:2: 'maybe' is not known here; expected 1 or 0\n");
}

TEST_F(BadInput, ASecondSimulatorOfTheSameNameIsRefused) {
    const auto first = desk.simulator();
    const auto second = desk.run("can-service-sim");
    EXPECT_EQ(second.exitCode, 1);
    EXPECT_NE(second.errors.find("can-service-sim: service 'fdbus_can_service' is already running (process " +
                                 std::to_string(first->pid()) + ")\n"),
              std::string::npos)
        << second.errors;
    EXPECT_EQ(desk.run("vehiclectl get " + kByte).exitCode, 0) << "the first one goes on";
    EXPECT_EQ(desk.simulator("--name another")->output().find("service down"), std::string::npos);
}

TEST_F(BadInput, ARuntimeDirectoryThatCannotBeUsedIsNamed) {
    const std::string below = desk.file("plain", "") + "/dir";
    const std::string deep = desk.directory() + "/" + std::string(100, 'd');  // too long for the socket in it
    for (const std::string& directory : {below, deep}) {
        for (const std::string tool : {"can-service-sim", "vehiclectl"}) {
            const auto result = desk.run(tool + (tool == "vehiclectl" ? " watch" : ""), {{"QVN_HOST_DIR", directory}});
            EXPECT_EQ(result.exitCode, 1);
            EXPECT_EQ(result.errors.rfind(tool + ": ", 0), 0U) << result.errors;
            EXPECT_NE(result.errors.find(desk.directory()), std::string::npos) << result.errors;
            EXPECT_NE(result.errors.find("QVN_HOST_DIR"), std::string::npos) << result.errors;
            EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
        }
    }
}

}  // namespace
}  // namespace qvn::e2e
