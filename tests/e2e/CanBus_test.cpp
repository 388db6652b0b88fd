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
        {kDatabase, "--dbc tells what frames mean; add --candump LOG"},
        {"--exit-at-end", "--exit-at-end needs --play or --candump"},
        {"--candump " + kLog, "--dbc"},
    };
    for (const auto& [options, error] : cases) {
        const auto result = desk.run("can-service-sim " + options);
        EXPECT_EQ(result.exitCode, 2) << options;
        EXPECT_NE(result.errors.find(error), std::string::npos) << result.errors;
    }
}

}  // namespace
}  // namespace qvn::e2e
