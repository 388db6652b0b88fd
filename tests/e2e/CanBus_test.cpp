#include <linux/can.h>
#include <unistd.h>

#include <cstdlib>

#include "can-service-sim/can/CanSocket.h"
#include "e2e/Desk.h"
#include "e2e/WatchOutput.h"

namespace qvn::e2e {
namespace {

using CanBus = DeskTest;

const std::string kDatabase = std::string(" --dbc ") + QVN_SHARE_DIR + "/dbc/parking.dbc ";
const std::string kLog = std::string(QVN_SHARE_DIR) + "/candump/parking.log";

TEST_F(CanBus, TheParkingLogPlaysThroughToItsEnd) {
    const auto watch = desk.start("vehiclectl watch HAP_FD1_APS_ProcBar");
    const auto played = desk.run("can-service-sim -v --speed 10 --exit-at-end --candump " + kLog + kDatabase);
    EXPECT_EQ(played.exitCode, 0) << played.errors;
    EXPECT_EQ(played.errors, "");
    std::size_t position = 0;
    for (const char* const line :
         {"10 messages, 23 signals; 20 of them known to the schema\n", "BO_ 658 HAP_FD1: HAP_FD1_Page\n",
          "  ESP_FD2_VehSpd=4.5\n", "  HAP_FD3 timed out\n", "  HAP_FD3 ok\n", "  BCM8_PASWorkCmd=0 close\n"}) {
        position = played.output.find(line, position);
        ASSERT_NE(position, std::string::npos) << line << played.output;
    }
    EXPECT_TRUE(waitForValue(*watch, "HAP_FD1_APS_ProcBar", 100)) << watch->output();
}

TEST_F(CanBus, WhatIsWrongInADatabaseIsToldOnceUnlessTheSchemaNeedsIt) {
    const std::string odd = desk.file("odd.dbc",
                                      "BO_ 1 A: 200 E\n SG_ S : 0|1600@1+ (1,0) [0|0] \"\" X\nBO_ 2 B: eight E\n"
                                      "BO_ 577 C: 8 E\n SG_ ESP_FD2_VehSpd : 7|16@0+ (1,0) [0|0] \"\xB0/s\" X\n");
    const std::string warning = odd +
                                ":2: expected a number of bits from 1 to 64 instead of '1600' in the signal BO_ 1 S; "
                                "this does not matter to the schema's signals (1 more likewise)\n";
    const auto played = desk.run("can-service-sim -v --speed 100 --exit-at-end --candump " + kLog + " --dbc " + odd);
    EXPECT_EQ(played.exitCode, 0) << played.errors;
    EXPECT_NE(played.output.find(warning), std::string::npos) << played.output;
    EXPECT_NE(played.output.find("wrong: " + odd + ":3: expected a number of bytes"), std::string::npos);
    const auto told = desk.run("vehiclectl --dbc " + odd + " info ESP_FD2_VehSpd");
    EXPECT_EQ(told.exitCode, 0);
    EXPECT_EQ(told.errors, "vehiclectl: " + warning);
    EXPECT_NE(told.output.find("deg/s"), std::string::npos) << told.output;
}

TEST_F(CanBus, BadInputIsToldInOneLine) {
    const std::string none = desk.file("none.dbc", "BO_ 1 A: 8 E\n SG_ S : 0|8@1+ (1,0) [0|0] \"\" X\n");
    const std::string broken = desk.file("broken.dbc", "BO_ 1 A: eight E\n");
    const std::string other = desk.file("other.log", "(1) can0 7FF#00\n");
    const struct {
        std::string options;
        std::string error;
    } cases[] = {
        {"--candump " + kLog + " --dbc " + broken,
         broken + ":1: expected a number of bytes instead of 'eight' in the message BO_ 1"},
        {"--candump " + kLog + " --dbc " + none, none + ": none of its 1 signals is known to the schema"},
        {"--candump " + other + kDatabase, other + ": none of its 1 data frames is a message of "},
        {"--candump /nonexistent.log" + kDatabase, "cannot open /nonexistent.log"},
        {kDatabase, "--dbc tells what frames mean; add --candump LOG or --can IFACE"},
        {"--exit-at-end", "--exit-at-end needs --play or --candump"},
        {"--candump " + kLog, "--dbc"},
        {"--can vcan0 --speed 2" + kDatabase, "--speed"},
    };
    for (const auto& [options, error] : cases) {
        const auto result = desk.run("can-service-sim " + options);
        EXPECT_EQ(result.exitCode, 2) << options;
        EXPECT_NE(result.errors.find(error), std::string::npos) << result.errors;
    }
    const auto missing = desk.run("can-service-sim --can qvn-none" + kDatabase);
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_EQ(missing.errors.rfind("can-service-sim: CAN interface qvn-none cannot be read: ", 0), 0U);
}

/// A CAN bus without hardware, as long as a test takes.
class VirtualInterface {
public:
    const std::string name = "qvn" + std::to_string(getpid());

    VirtualInterface() = default;
    ~VirtualInterface() { run("del " + name); }
    VirtualInterface(const VirtualInterface&) = delete;
    VirtualInterface& operator=(const VirtualInterface&) = delete;

    bool make() const { return run("add dev " + name + " type vcan"); }
    bool set(const char* state) const { return run("set " + name + " " + state); }

private:
    static bool run(const std::string& what) { return std::system(("ip link " + what + " 2>/dev/null").c_str()) == 0; }
};

TEST_F(CanBus, FramesOfAnInterfaceArriveAndItMayGoAwayAndComeBack) {
    const VirtualInterface bus;
    if (!bus.make()) {
        GTEST_SKIP() << "a virtual CAN interface cannot be made here; it takes root and the kernel's module vcan";
    }
    const auto down = desk.run("can-service-sim --can " + bus.name + kDatabase);
    EXPECT_NE(down.errors.find("'ip link set " + bus.name + " up'"), std::string::npos) << down.errors;
    ASSERT_TRUE(bus.set("up"));
    const auto simulator = desk.simulator("-v --can " + bus.name + kDatabase);
    const std::string ready = "CAN interface " + bus.name + " is received from\n";
    ASSERT_TRUE(simulator->waitForOutput(ready));
    ASSERT_TRUE(bus.set("down") && bus.set("up"));
    ASSERT_TRUE(
        simulator->waitForOutput([&](const std::string& output) { return output.find(ready) != output.rfind(ready); }));
    std::string error;
    const int socket = tools::openCanInterface(bus.name, &error);
    const can_frame frame = {0x241, {8}, 0, 0, 0, {0x00, 0x50, 0x01}};
    EXPECT_EQ(write(socket, &frame, sizeof frame), static_cast<ssize_t>(sizeof frame)) << error;
    EXPECT_TRUE(simulator->waitForOutput("  ESP_FD2_VehSpd=4.5\n"));
    EXPECT_TRUE(simulator->waitForOutput("  ESP_FD2 timed out\n"));
    close(socket);
}

}  // namespace
}  // namespace qvn::e2e
