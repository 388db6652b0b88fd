#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>

#include "e2e/Process.h"

namespace qvn::e2e {
namespace {

struct Case {
    std::vector<std::string> arguments;
    int exitCode;
    std::string errors;
};

TEST(BadInput, VehiclectlTellsWhatIsWrong) {
    const Desk desk;
    const Case cases[] = {
        {{"get", "VehSpd"},
         2,
         "vehiclectl: unknown property 'VehSpd'; did you mean ESP_FD2_VehSpd or ESP_FD2_VehSpdVld?\n"},
        {{"watch", "0x12345678"},
         2,
         "vehiclectl: no property has the identifier 0x12345678; 'vehiclectl list' shows them all\n"},
        {{"get", "HUT6_CarMdlDispCmd"},
         2,
         "vehiclectl: HUT6_CarMdlDispCmd can only be set; the vehicle never reports it\n"},
        {{"set", "ESP_FD2_VehSpd", "1"},
         2,
         "vehiclectl: ESP_FD2_VehSpd is only reported by the vehicle; it cannot be set\n"},
        {{"set", "HUT6_CarMdlDispCmd", "300"},
         2,
         "vehiclectl: value 300 does not fit HUT6_CarMdlDispCmd; expected a whole number from 0 to 255\n"},
        {{"set", "HUT6_CarMdlDispCmd", "on"}, 2, "vehiclectl: 'on' is no number; expected the value to set\n"},
        {{"set", "HUT6_CarMdlDispCmd", "1", "--wait-for", "HAP_FD2_CarMdlDispSts"},
         2,
         "vehiclectl: 'HAP_FD2_CarMdlDispSts' is nothing to wait for; expected PROPERTY=VALUE\n"},
        {{"get", "ESP_FD2_VehSpd", "--timeout", "0.1"},
         3,
         "vehiclectl: no value of ESP_FD2_VehSpd within 0.1 s; is the CAN service running?\n"},
        {{"set", "HUT6_CarMdlDispCmd", "1", "--timeout", "0.1"},
         3,
         "vehiclectl: the CAN service did not appear within 0.1 s; nothing was set\n"},
    };
    for (const Case& c : cases) {
        const auto result = desk.runVehiclectl(c.arguments);
        EXPECT_EQ(result.exitCode, c.exitCode);
        EXPECT_EQ(result.errors, c.errors);
        EXPECT_EQ(result.output, "");
    }
    for (const std::vector<std::string>& usage : {std::vector<std::string>{},
                                                  {"get"},
                                                  {"fetch"},
                                                  {"watch", "--count", "0"},
                                                  {"get", "--timeout", "x", "y"},
                                                  {"get", "ESP_FD2_VehSpd", "--timeout", "nan"},
                                                  {"watch", "--duration", "nan"}}) {
        const auto result = desk.runVehiclectl(usage);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_NE(result.errors, "");
    }
}

TEST(BadInput, VehiclectlWithoutAUsableClientFailsAtOnce) {
    const Desk desk;
    desk.file("vehicle.json", "{\"config_qvn\": ");
    const char* const error = "vehiclectl: the vehicle client could not start; its log says why, more of it with -v\n";
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"get", "ESP_FD2_VehSpd"}, {"watch"}, {"set", "HUT6_CarMdlDispCmd", "1"}}) {
        const auto result = desk.runVehiclectl(arguments);
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_NE(result.errors.find(error), std::string::npos) << result.errors;
        EXPECT_NE(result.errors.find("vehicle.json"), std::string::npos) << result.errors;
    }
}

TEST(BadInput, SimulatorTellsWhatIsWrong) {
    const Desk desk;
    const std::string trace = desk.file("bad.trace", "# one\n(0.0) reverse=1\n(0.5) ESP_FD2_VehSpd=fast\n");
    const std::string rules = desk.file("bad.rules", "HUT6_CarMdlDispCmd => HAP_FD2_CarMdlDispSts\n");
    const std::string still = desk.file("still.trace", "(0) reverse=1\n");
    const Case cases[] = {
        {{"--play", trace}, 2, "can-service-sim: " + trace + ":3: 'fast' is no number; expected a physical value\n"},
        {{"--play", "/nonexistent.trace"}, 2, "can-service-sim: cannot open /nonexistent.trace\n"},
        {{"--rules", rules},
         2,
         "can-service-sim: " + rules +
             ":1: 'HUT6_CarMdlDispCmd => HAP_FD2_CarMdlDispSts' is no rule; expected SET[=VALUE] -> SIGNAL[=VALUE] "
             "[after SECONDS]\n"},
        {{"--loop", "--play", still},
         2,
         "can-service-sim: " + still + " is over at once; --loop needs a trace that takes time\n"},
    };
    for (const Case& c : cases) {
        const auto result = desk.runSimulator(c.arguments);
        EXPECT_EQ(result.exitCode, c.exitCode);
        EXPECT_EQ(result.errors, c.errors);
        EXPECT_EQ(result.output, "") << "a trace is checked as a whole before it plays";
    }
    for (const std::vector<std::string>& usage :
         {std::vector<std::string>{"--loop"}, {"--speed", "0"}, {"--speed", "nan"}, {"--nonsense"}, {"-q", "-v"}}) {
        EXPECT_EQ(desk.runSimulator(usage).exitCode, 2);
    }
}

TEST(BadInput, AWrongLineOnStandardInputEndsAScriptedSimulator) {
    const Desk desk;
    const auto simulator = desk.simulator();
    simulator->write("ESP_FD2_VehSpd=1\nreverse=maybe\nESP_FD2_VehSpd=2\n");
    EXPECT_EQ(simulator->wait(), 2);
    EXPECT_EQ(simulator->errors(), "can-service-sim: stdin:2: 'maybe' is not known here; expected 1 or 0\n");
}

TEST(BadInput, ASecondSimulatorOfTheSameNameIsRefused) {
    const Desk desk;
    const auto first = desk.simulator();
    const auto second = desk.runSimulator({});
    EXPECT_EQ(second.exitCode, 1);
    EXPECT_NE(second.errors.find("can-service-sim: service 'fdbus_can_service' is already running (process " +
                                 std::to_string(first->pid()) + ")\n"),
              std::string::npos)
        << second.errors;
    EXPECT_EQ(desk.runVehiclectl({"get", "ESP_FD2_VehSpd"}).exitCode, 0) << "the first one goes on";
    EXPECT_EQ(desk.simulator({"--name", "another"})->output().find("service down"), std::string::npos);
}

TEST(BadInput, ARuntimeDirectoryThatCannotBeUsedIsNamed) {
    const Desk desk;
    const std::string below = desk.file("plain", "") + "/dir";
    const std::string deep = desk.directory() + "/" + std::string(100, 'd');  // too long for the socket in it
    const std::pair<const char*, Desk::Result> results[] = {
        {"can-service-sim: ", desk.runSimulator({}, {{"QVN_HOST_DIR", below}})},
        {"can-service-sim: ", desk.runSimulator({}, {{"QVN_HOST_DIR", deep}})},
        {"vehiclectl: ", desk.runVehiclectl({"get", "ESP_FD2_VehSpd"}, {{"QVN_HOST_DIR", below}})},
        {"vehiclectl: ", desk.runVehiclectl({"get", "ESP_FD2_VehSpd"}, {{"QVN_HOST_DIR", deep}})},
    };
    for (const auto& [tool, result] : results) {
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.errors.rfind(tool, 0), 0U) << result.errors;
        EXPECT_NE(result.errors.find(desk.directory()), std::string::npos) << result.errors;
        EXPECT_NE(result.errors.find("QVN_HOST_DIR"), std::string::npos) << result.errors;
        EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
    }
}

}  // namespace
}  // namespace qvn::e2e
