#include "can-service-sim/Answers.h"

#include <gtest/gtest.h>

#include <cstring>
#include <nlohmann/json.hpp>

#include "support/SimulationBench.h"

namespace qvn::tools {
namespace {

TEST(Answers, FollowASetByTheirRulesInTheVehiclesTime) {
    std::istringstream rules(
        "HUT6_CarMdlDispCmd -> HAP_FD2_CarMdlDispSts after 5\n"
        "HUT6_CarMdlDispCmd=2 -> ESP_FD2_VehSpd=9\n"
        "HUT32_XLvl -> PLG_1_PLG_Sts after 1\n");
    Bench bench(10.0);
    std::string told;
    Journal journal([&](const std::string& line) { told += line.substr(std::strlen("    0.000  ")); },
                    Journal::Detail::Normal, Journal::Form::Lines);
    journal.listen([&](const Json& event) {
        if (event["event"] == "no answer") {
            told += event["reason"].get<std::string>() + " (set " + event["set"].dump() + ")" + "\n";
        }
    });
    Answers answers(bench.simulation, journal, readRules(rules, "my.rules"));
    bench.start(traceOf("(100) reverse=1\n"));
    bench.told();
    const auto set = [&](const char* name, const std::string& raw) {
        answers.take(findCode(NameKind::Settable, name), raw);
    };
    set("HUT6_CarMdlDispCmd", "\x02");
    set("HUT6_CarMdlDispCmd", "\x02\x02");
    bench.pass(0.49);
    EXPECT_EQ(bench.told(), "0 ESP_FD2_VehSpd=00A0; ");
    bench.pass(0.02);
    EXPECT_EQ(bench.told(), "5 HAP_FD2_CarMdlDispSts=02; ");
    set("HUT6_CarMdlDispCmd", "\x01");
    set("HUT32_XLvl", "\x01\x2C");
    bench.pass(0.6);
    EXPECT_EQ(bench.told(), "10.1 HAP_FD2_CarMdlDispSts=01; ") << "300 does not fit the other one";
    answers.take(0x12345678, "\x01");
    EXPECT_EQ(told,
              "set HUT6_CarMdlDispCmd=2  (02)\n"
              "set HUT6_CarMdlDispCmd (0202) ignored: it is of the wrong length\n"
              "answer ESP_FD2_VehSpd=9\n"
              "answer HAP_FD2_CarMdlDispSts=2\n"
              "set HUT6_CarMdlDispCmd=1  (01)\n"
              "set HUT32_XLvl=300  (012C)\n"
              "no answer by PLG_1_PLG_Sts: value 300 does not fit; expected a whole number from 0 to 255 (set 3)\n"
              "answer HAP_FD2_CarMdlDispSts=1\n"
              "set 0x12345678 (01) ignored: it cannot be set\n");
}

}  // namespace
}  // namespace qvn::tools
