#include <signal.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "e2e/Desk.h"
#include "e2e/RawSocket.h"
#include "e2e/WatchOutput.h"
#include "support/Scale.h"

namespace qvn::e2e {
namespace {

using Simulator = DeskTest;

/// The seconds at which the journal tells of something, once; -1 when it does not.
double timeOf(const std::string& journal, const std::string& what) {
    std::istringstream lines(journal);
    for (std::string line; std::getline(lines, line);) {
        if (line.substr(std::min<std::size_t>(line.size(), 11)) == what) {
            return std::stod(line);
        }
    }
    return -1.0;
}

TEST_F(Simulator, TakesLinesOfItsInputAtTheirTimes) {
    const auto simulator = desk.simulator("-v");
    simulator->write("(0.5) BCM1_DrvDoorSts=1\nBCM1_DrvDoorSts=2");  // without its end
    simulator->closeInput();
    EXPECT_EQ(simulator->wait(), 0) << "it ends after the last of them";
    EXPECT_GE(timeOf(simulator->output(), "BCM1_DrvDoorSts=1 open"), 0.5);
    EXPECT_GE(timeOf(simulator->output(), "BCM1_DrvDoorSts=2"), 0.0);
}

TEST_F(Simulator, GoesToAPlaceInItsTrace) {
    const std::string trace = desk.file("a.trace",
                                        "(0) BCM1_DrvDoorSts=1\n(100) ESP_FD2_VehSpd=9 every 0.1\n"
                                        "(200) HAP_FD2_AVM_CurrSts=3\n(300) HAP_FD3!timeout\n");
    const auto simulator = desk.simulator("- --play " + trace);
    simulator->write("pause\nseek 250\nshow *_DrvDoorSts\nshow *VehSpd\nshow *AVM_CurrSts\n");
    EXPECT_TRUE(
        simulator->waitForOutput("stands at 250 s\nBCM1_DrvDoorSts                          1 open\n"
                                 "ESP_FD2_VehSpd                           9 km/h\n"
                                 "HAP_FD2_AVM_CurrSts                      3\n"))
        << simulator->output() << simulator->errors();
    simulator->write("HAP_FD1!timeout\nESP_FD2!delay 30\nESP_FD2_VehSpd=18\nseek 50\nshow *VehSpd\n");
    EXPECT_TRUE(simulator->waitForOutput("stands at 50 s\nESP_FD2_VehSpd                           0 km/h\n"))
        << "what comes later only is as before the trace";
    EXPECT_TRUE(simulator->waitForOutput("HAP_FD1 ok")) << "and nothing is wrong any more";
    simulator->write("seek 299.9\nresume\n");
    EXPECT_TRUE(simulator->waitForOutput("HAP_FD3 timed out")) << "it plays on from there";
    simulator->write("seek 301\n");
    EXPECT_EQ(simulator->wait(), 2);
    EXPECT_EQ(simulator->errors(),
              "can-service-sim: stdin:13: '301' is out of range; expected seconds of the trace from 0 to 300\n");
}

TEST_F(Simulator, PlaysATraceWithItsCyclesAndAnswersFaster) {
    const std::string trace = desk.file("a.trace",
                                        "(400) BCM1_DrvDoorSts=1\n"
                                        "(0) HAP_FD2_AVM_3DAngSts=1 every 10 for 50\n");
    const auto played = desk.run("can-service-sim -v --exit-at-end --speed 1000 --play " + trace);
    EXPECT_EQ(played.exitCode, 0);
    EXPECT_GE(timeOf(played.output, "BCM1_DrvDoorSts=1 open"), 0.4);
    EXPECT_GE(timeOf(played.output, "HAP_FD2 timed out"), 0.05) << played.output;

    const auto simulator =
        desk.simulator("--speed 1000 --rules " + desk.file("a.rules", "HUT32_XLvl -> BCM1_DrvDoorSts=7 after 100\n"));
    EXPECT_EQ(desk.run("vehiclectl set HUT32_XLvl 1 --wait-for BCM1_DrvDoorSts=7 --timeout 20").exitCode, 0);
}

TEST_F(Simulator, ALoopedTraceDoesNotGrow) {
    constexpr std::size_t kJournalOfARound = 60;
    constexpr int kMostKibibytes = 512;
    const std::string trace = desk.file("a.trace",
                                        "(0) ESP_FD2_VehSpd=4.5 every 1000\n"
                                        "(0) CSA2_SteerWheelAng=3 every 0.001 for 0.002\n"
                                        "(0.02) BCM1_DrvDoorSts=1\n");
    const std::string speed = test::kSanitized ? "10" : "100";
    const auto simulator = desk.simulator("--loop --speed " + speed + " --play " + trace);
    const auto rounds = [&](int count) {
        return simulator->waitForOutput([&](const std::string& journal) {
            return journal.size() > static_cast<std::size_t>(count) * kJournalOfARound;
        });
    };
    ASSERT_TRUE(rounds(test::scaled(500)));
    const long before = simulator->peakKibibytes();
    ASSERT_TRUE(rounds(test::scaled(3500)));
    if (!test::kSanitized) {
        EXPECT_LT(simulator->peakKibibytes(), before + kMostKibibytes);
    }
}

TEST_F(Simulator, IsAtHandWhenATraceIsTooFastForIt) {
    const std::string trace = desk.file("a.trace", "(0) BCM1_DrvDoorSts=1\n(0.000001) BCM1_DrvDoorSts=2\n");
    const std::string rules = desk.file("a.rules", "HUT32_XLvl -> BCM1_DrvDoorSts=7 after 0.2\n");
    const auto simulator = desk.simulator("--loop --speed 1000 --play " + trace + " --rules " + rules);
    const auto set = desk.run("vehiclectl set HUT32_XLvl 1");
    EXPECT_EQ(set.exitCode, 0) << set.errors;
    EXPECT_TRUE(simulator->waitForOutput("answer BCM1_DrvDoorSts=7"));
    simulator->signal(SIGTERM);
    EXPECT_EQ(simulator->wait(), 0);
}

TEST_F(Simulator, AMessageTimesOutAndComesBackByItselfAndByHand) {
    const auto simulator = desk.simulator();
    const auto watch = desk.watch("ESP_FD2_VehSpd");
    const struct {
        const char* input;
        std::string line;
    } steps[] = {
        {"ESP_FD2_VehSpd=4.5 every 0.02", shown("ESP_FD2_VehSpd", "4.5 km/h")},
        {"ESP_FD2_VehSpd=9", shown("ESP_FD2_VehSpd", "9 km/h")},  // by the cycle
        {"ESP_FD2_VehSpd!stop", shown("ESP_FD2_VehSpd", "9 km/h", "timed out")},
        {"ESP_FD2_VehSpd=18 every 0.02 for 0.06", shown("ESP_FD2_VehSpd", "18 km/h")},
        {"# the end of the cycle", shown("ESP_FD2_VehSpd", "18 km/h", "timed out")},
        {"ESP_FD2!ok", shown("ESP_FD2_VehSpd", "18 km/h")},
        {"ESP_FD2!timeout", shown("ESP_FD2_VehSpd", "18 km/h", "timed out")},
        {"ESP_FD2!ok", shown("ESP_FD2_VehSpd", "18 km/h")},
    };
    std::size_t seen = 0;
    for (const auto& [input, line] : steps) {
        simulator->write(std::string(input) + "\n");
        ASSERT_TRUE(waitForLine(*watch, line, seen)) << input << ": " << watch->output();
        seen = watch->output().find(line, seen) + line.size();
    }
}

TEST_F(Simulator, DecodesASetAndAnswersItByItsRule) {
    const auto simulator =
        desk.simulator("--no-initial --rules " + desk.file("my.rules",
                                                           "DMS_FD1_HeadYawAng=-75 -> ESP_FD2_VehSpd=18 after 0.05\n"
                                                           "HUT34_TimeMod -> ESP_FD2_VehSpd=9\n"
                                                           "HUT34_TimeMod -> ESP_FD2_VehSpd=0 after 0.02\n"));
    const struct {
        const char* set;
        const char* waitFor;
        const char* journal;
        const char* error;
    } cases[] = {
        {"HUT6_CarMdlDispCmd 1", "HAP_FD2_CarMdlDispSts=1 --timeout 20", "set HUT6_CarMdlDispCmd=1  (01)", nullptr},
        {"DMS_FD1_HeadYawAng -- -75", "ESP_FD2_VehSpd=18 --timeout 20", "answer ESP_FD2_VehSpd=18", nullptr},
        {"HUT34_TimeMod 1", "ESP_FD2_VehSpd=9 --timeout 20", "answer ESP_FD2_VehSpd=0", nullptr},  // a pulse
        {"HUT32_XLvl 300", "HAP_FD2_CarMdlDispSts=2 --timeout 0.2", "set HUT32_XLvl=300  (012C)",
         "vehiclectl: HAP_FD2_CarMdlDispSts is 1 after 0.2 s, not 2\n"},
        {"HUT32_XLvl 2", "PEPS2_SysPowerMod=2 --timeout 0.2", "set HUT32_XLvl=2  (0002)",
         "vehiclectl: PEPS2_SysPowerMod is - after 0.2 s, not 2\n"},  // the client's own value of it does not count
    };
    for (const auto& [set, waitFor, journal, error] : cases) {
        const auto result = desk.run(std::string("vehiclectl set --wait-for ") + waitFor + " " + set);
        EXPECT_EQ(result.exitCode, error ? 3 : 0) << set;
        EXPECT_EQ(result.errors, error ? error : "");
        EXPECT_TRUE(simulator->waitForOutput(journal)) << simulator->output();
    }
}

TEST_F(Simulator, BreaksWhatItIsToldTo) {
    const auto simulator = desk.start("can-service-sim --json -v");
    ASSERT_TRUE(simulator->waitForOutput(R"("event":"service","up":true})"));
    const auto watch = desk.watch("EPB1_EPBSts PLG_1_PLG_Sts");
    const auto tells = [&](const std::string& part) { return simulator->waitForOutput(part); };
    simulator->write("EPB1_EPBSts=1 every 0.02\nPLG_1_PLG_Sts=2\n");
    ASSERT_TRUE(waitForValue(*watch, "EPB1_EPBSts", 1));
    simulator->write("EPB1!silence\n");
    ASSERT_TRUE(tells(R"("event":"message","message":"EPB1","ok":false})")) << "by its supervision";
    ASSERT_TRUE(waitForLine(*watch, shown("EPB1_EPBSts", "1", "timed out")));
    simulator->write("EPB1!ok\nEPB1_EPBSts!freeze\nEPB1_EPBSts=5\nEPB1_EPBSts=6\nPLG_1!delay 0.1\n");
    simulator->write("PLG_1_PLG_Sts=3\nPLG_1!delay 0\nPLG_1_PLG_Sts=4\n");
    ASSERT_TRUE(waitForValue(*watch, "PLG_1_PLG_Sts", 4));
    EXPECT_EQ(valuesOf(watch->output(), "PLG_1_PLG_Sts"), (std::vector<int>{0, 2, 3, 4})) << "late, but in order";
    simulator->write("EPB1_EPBSts!thaw\n");
    ASSERT_TRUE(waitForValue(*watch, "EPB1_EPBSts", 6));
    EXPECT_EQ(valuesOf(watch->output(), "EPB1_EPBSts"), (std::vector<int>{0, 1, 1, 1, 6}));
    EXPECT_TRUE(tells(R"("event":"fault","of":"PLG_1","fault":"is late by","seconds":0.1})"));
    EXPECT_TRUE(tells(R"("event":"signal","signal":"EPB1_EPBSts","value":6,"raw":"06"})"));
    simulator->write("HAP_FD1_APS_ProcBar=ramp 0..3 for 0.1 every 0.02\n");
    EXPECT_TRUE(tells(R"("signal":"HAP_FD1_APS_ProcBar","value":3)"));
}

TEST_F(Simulator, CommandsAreTakenFromAScript) {
    const auto script = desk.simulator("--play " + desk.file("a.trace", "(1000) BCM1_DrvDoorSts=1\n") + " -");
    script->write("speed 0.5\npause\nspeed 1000\nresume\nEPB1_EPBSts=3\nshow EPB*\nlist EPB1\n");
    ASSERT_TRUE(script->waitForOutput("message of 1 signals"));
    EXPECT_NE(script->output().find("EPB1_EPBSts                              3\n"), std::string::npos);
    script->write("show DCT5*\n");
    ASSERT_TRUE(script->waitForOutput("DCT5_TGS_LEVER                           0 P\n"));
    script->write("speed fast\n");
    EXPECT_EQ(script->wait(), 2);
    EXPECT_NE(script->errors().find("stdin:9: 'fast' is not a number"), std::string::npos) << script->errors();
}

TEST_F(Simulator, ReverseBeforeTheServiceReachesAnApplication) {
    const std::string trace = desk.file("a.trace", "(0) service=down\n(0) reverse=0\n(0) " + kByte + "=1\n");
    const auto simulator = desk.simulator("- --play " + trace);
    ASSERT_TRUE(simulator->waitForOutput("reverse released"));
    const auto watch = desk.watch("BCM8_PASWorkCmd " + kByte);
    ASSERT_TRUE(waitForLine(*watch, shown("BCM8_PASWorkCmd", "0 close")));
    simulator->write("reverse=1\n");
    ASSERT_TRUE(waitForLine(*watch, shown("BCM8_PASWorkCmd", "1 open")));
    EXPECT_EQ(watch->output().find(kByte), std::string::npos);
    simulator->write("service=up\n");
    EXPECT_TRUE(waitForValue(*watch, kByte, 1));
}

TEST_F(Simulator, TheParkingTracePlaysThroughToItsEnd) {
    const auto watch = desk.start("vehiclectl watch HAP_FD1_APS_ProcBar");
    const auto played = desk.run("can-service-sim --play " QVN_PARKING_TRACE " --speed 10 --exit-at-end");
    EXPECT_EQ(played.exitCode, 0) << played.errors;
    EXPECT_LT(timeOf(played.output, "HAP_FD3 timed out"), timeOf(played.output, "HAP_FD3 ok")) << played.output;
    EXPECT_TRUE(waitForValue(*watch, "HAP_FD1_APS_ProcBar", 100)) << watch->output();
}

TEST_F(Simulator, TheReverseLineIsNeverHalfWritten) {
    const auto simulator = desk.simulator();
    simulator->write("reverse=0\n");
    ASSERT_TRUE(simulator->waitForOutput("reverse released"));
    std::string moves;
    for (int i = 0; i < 1000; ++i) {
        moves += "reverse=1\nreverse=0\n";
    }
    simulator->write(moves + "show DCT5*\n");
    for (std::size_t seen = 0; seen == 0; seen = simulator->output().find("DCT5_TGS_LEVER") + 1) {
        for (int i = 0; i < 100; ++i) {
            std::string level;
            std::ifstream(desk.directory() + "/gpio/87") >> level;
            ASSERT_TRUE(level == "0" || level == "1") << "'" << level << "'";
        }
    }
}

TEST_F(Simulator, TellsOfAClientThatWillReceiveNothing) {
    const auto simulator = desk.simulator();
    const std::string nothing("\1\0\0\0\0\0", 6);
    const std::string door("\xD0\x02\x19\x03\0\0", 6);
    const RawSocket well(serviceSocket(desk.directory()));
    const RawSocket lost(serviceSocket(desk.directory()));
    ASSERT_TRUE(well.write(frame(kSubscribe, 0, nothing + door)));
    ASSERT_FALSE(well.read().empty());
    ASSERT_TRUE(lost.write(frame(kSubscribe, 0, nothing + nothing)));
    EXPECT_TRUE(simulator->waitForOutput("a client subscribed 2 codes, none of which is a signal or message here"));
    EXPECT_EQ(simulator->output().find("a client"), simulator->output().rfind("a client")) << simulator->output();
}

TEST_F(Simulator, EndsWithItsInputOrASignal) {
    const auto byInput = desk.simulator();
    byInput->write("reverse=1\n");
    byInput->closeInput();
    EXPECT_EQ(byInput->wait(), 0);
    std::string level;
    std::ifstream(desk.directory() + "/gpio/87") >> level;
    EXPECT_EQ(level, "0");

    for (const int number : {SIGINT, SIGTERM}) {
        const auto background = desk.simulator();
        background->closeInput();
        background->signal(number);
        EXPECT_EQ(background->wait(), 0);
    }
}

}  // namespace
}  // namespace qvn::e2e
