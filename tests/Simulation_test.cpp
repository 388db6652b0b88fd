#include "can-service-sim/Simulation.h"

#include <gtest/gtest.h>

#include <random>
#include <sstream>

#include "support/SimulationBench.h"

namespace qvn::tools {
namespace {

TEST(Simulation, EverythingThatRunsFollowsTheSpeed) {
    Bench bench;
    bench.start(traceOf("(0) BCM1_DrvDoorSts=1 every 10\n(0) EPB1!delay 5\n(0) EPB1_EPBSts=1\n(20) PLG_1_PLG_Sts=2\n"));
    bench.simulation.at(vehicleTime(8.0), [&] { bench.simulation.happen(ReverseEvent{true}); });
    bench.told();
    bench.simulation.setSpeed(100.0);
    bench.pass(0.045);
    EXPECT_EQ(bench.told(), "0 BCM1_DrvDoorSts=01; ") << "the first of the cycle was due before";
    bench.pass(0.01);
    EXPECT_EQ(bench.told(), "5 EPB1_EPBSts=01; ");
    bench.pass(0.1);
    EXPECT_EQ(bench.told(), "8 reverse=1; 10 BCM1_DrvDoorSts=01; ");
    bench.simulation.setSpeed(0.1);
    bench.say("BCM1_DrvDoorSts!stop");
    bench.say("DCT5_TGS_LEVER=2 every 1");
    bench.pass(40.0);
    EXPECT_EQ(bench.told(),
              "15.5 DCT5_TGS_LEVER=02; 16.5 DCT5_TGS_LEVER=02; 17.5 DCT5_TGS_LEVER=02; 18.5 DCT5_TGS_LEVER=02; "
              "19.5 DCT5_TGS_LEVER=02; ")
        << "and no false time-out";
    bench.simulation.setSpeed(1000.0);
    bench.pass(0.0404);
    EXPECT_EQ(bench.seen("BCM1"), "-") << "50 s after the last one, at 60.0";
    bench.pass(0.0002);
    EXPECT_EQ(bench.seen("BCM1"), "lost");
}

TEST(Simulation, ALoopKeepsItsTimeAndAPauseHoldsTheTraceOnly) {
    Bench bench;
    bench.start(traceOf("(0.1) BCM1_DrvDoorSts=1\n(0.3) reverse=1\n"), true);
    bench.pass(0.3 * 999 + 0.0999999);
    bench.told();
    bench.pass(0.0000002);
    EXPECT_EQ(bench.told(), "0.1 BCM1_DrvDoorSts=01; ") << "of round 1,000";
    bench.simulation.pause();
    bench.simulation.setSpeed(2.0);
    bench.say("EPB1_EPBSts=1 every 1");
    bench.pass(1.0);
    EXPECT_EQ(bench.told(), "0.1 EPB1_EPBSts=01; 0.1 EPB1_EPBSts=01; 0.1 EPB1_EPBSts=01; ") << "it stays paused";
    bench.simulation.pause();
    bench.simulation.seek(0.25);
    EXPECT_EQ(bench.simulation.playback().position(bench.simulation.time()), 0.25);
    bench.told();
    bench.simulation.resume();
    bench.pass(0.024);
    EXPECT_EQ(bench.told(), "");
    bench.pass(0.002);
    EXPECT_EQ(bench.told(), "0.3 reverse=1; ");
}

TEST(Simulation, ASeekTellsOnlyTheDifference) {
    Bench bench;
    bench.start(
        traceOf("(0) BCM1_DrvDoorSts=1\n(1) EPB1_EPBSts=1 every 0.1\n(2) EPB1!delay 0.5\n(3) service=down\n"
                "(4) service=up\n(5) reverse=1\n(6) HAP_FD1!timeout\n"));
    bench.pass(2.25);
    bench.say("DCT5_TGS_LEVER=2");
    bench.say("HAP_FD3!timeout");
    bench.told();
    bench.simulation.seek(0.5);
    EXPECT_EQ(bench.told(), "0.5 EPB1_EPBSts=00; 0.5 HAP_FD3=ok; ");
    bench.pass(0.4);
    EXPECT_EQ(bench.told(), "") << "no late value of before";
    EXPECT_EQ(bench.seen("DCT5_TGS_LEVER"), "02") << "what the trace is not about stays";
    bench.simulation.seek(3.0);
    EXPECT_EQ(bench.told(), "3 service=down; 3 EPB1_EPBSts=01; ");
    bench.simulation.seek(6.0);
    EXPECT_EQ(bench.told(), "6 HAP_FD1=lost; 6 reverse=1; 6 service=up; ");
    bench.simulation.seek(0.0);
    EXPECT_EQ(bench.told(), "0 EPB1_EPBSts=00; 0 HAP_FD1=ok; 0 reverse=0; ");

    bench.say("DCT5_TGS_LEVER!freeze");
    bench.say("DCT5_TGS_LEVER=5");
    bench.told();
    bench.simulation.seek(0.0);
    EXPECT_EQ(bench.told(), "0 DCT5_TGS_LEVER=05; ") << "what was frozen shows its latest value";

    Bench none(1.0, false);
    none.start(traceOf("(0) EPB1_EPBSts!freeze\n(1) EPB1_EPBSts=1\n"), false, 1.0);
    EXPECT_EQ(none.told(), "1 EPB1_EPBSts=01; 1 service=up; ");
    none.simulation.seek(0.5);
    EXPECT_EQ(none.seen("EPB1_EPBSts"), "-");
}

TEST(Simulation, WhatGoesOnGoesOnAsItShould) {
    const std::pair<const char*, const char*> cases[] = {
        {"(0) S=1 every 1 for 2.5\n", "0 S=01; 1 S=01; 2 S=01; 7 EPB1=lost; "},
        {"(0) S=1 every 1 for 2\n(1.5) S=2\n", "0 S=01; 1 S=01; 1.5 S=02; 6.5 EPB1=lost; "},
        {"(0) S=ramp 0..2 every 2 for 3\n(7) S!stop\n", "0 S=00; 2 S=01; 4 S=02; 6 S=02; "},
        {"(0) S=step 1,2 every 1 for 2\n", "0 S=01; 1 S=02; 2 S=01; 7 EPB1=lost; "},
        {"(0) S=step 1,2 every 2 for 4\n(1) S=5\n", "0 S=01; 1 S=05; 2 S=05; 4 S=05; 6 S=05; 8 S=05; "},
        {"(0) S!delay 2\n(0) S=1\n(1) S!delay 0\n(1) S=2\n(3) S=3\n", "2 S=01; 2 S=02; 3 S=03; "},
        {"(0) EPB1!delay 2\n(0) S!delay 1\n(0) S=1\n(1) EPB1!delay 0\n(2) S=2\n", "2 S=01; 3 S=02; "},
        {"(0) S=1\n(1) S!freeze\n(2) S=2\n(3) S!thaw\n(4) S=3\n", "0 S=01; 2 S=01; 3 S=02; 4 S=03; "},
        {"(0) S=1\n(1) EPB1!timeout\n(2) S=2\n(3) EPB1!ok\n", "0 S=01; 1 EPB1=lost; 2 S=02; 3 EPB1=ok; "},
        {"(0) S=1 every 1\n(1.5) EPB1!silence\n(8.5) EPB1!ok\n", "0 S=01; 1 S=01; 6 EPB1=lost; 8.5 EPB1=ok; 9 S=01; "},
        {"(0) S=1 every 1 for 1\n(6) S=2\n(7) EPB1!ok\n", "0 S=01; 5 EPB1=lost; 6 EPB1=ok; 6 S=02; 7 EPB1=ok; "},
    };
    const auto replaced = [](std::string text, const std::string& what, const std::string& by) {
        for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += by.size()) {
            text.replace(at, what.size(), by);
        }
        return text;
    };
    for (const auto& [text, told] : cases) {
        Bench bench;
        bench.start(traceOf(replaced(text, " S", " EPB1_EPBSts") + "(10) service=down\n"));
        bench.told();
        bench.pass(9.5);
        EXPECT_EQ(replaced(bench.told(), "EPB1_EPBSts", "S"), told) << text;
    }
}

/// An action of some kind on one of few signals, so that they meet.
std::string someAction(std::mt19937& random) {
    const auto pick = [&random](std::initializer_list<const char*> from) {
        return from.begin()[random() % from.size()];
    };
    const std::string signal = pick({"BCM1_DrvDoorSts", "BCM1_TrunkSts", "EPB1_EPBSts", "PLG_1_PLG_Sts"});
    const std::string message = pick({"BCM1", "EPB1", "PLG_1"});
    const std::string value = "=" + std::to_string(random() % 9);
    const std::string every = std::string(" every ") + pick({"0.01", "0.07", "0.1", "0.5"});
    const std::string lasting = std::string(" for ") + pick({"0.1", "0.3", "1"});
    switch (random() % 16) {
        case 0:
        case 1:
            return signal + value;
        case 2:
            return signal + value + every;
        case 3:
            return signal + value + every + lasting;
        case 4:
            return signal + "=ramp 0..9" + lasting + every;
        case 5:
            return signal + "=step 1,2,3" + pick({"", " for 0.3"}) + every;
        case 6:
            return signal + "=random 0..9" + every;
        case 7:
            return signal + "!stop";
        case 8:
            return signal + pick({"!freeze", "!thaw"});
        case 9:
            return message + "!silence";
        case 10:
            return message + pick({"!ok", "!ok", "!timeout"});
        case 11:
            return pick({message.c_str(), signal.c_str()}) + std::string("!delay ") + pick({"0", "0", "0.05", "0.4"});
        case 12:
            return std::string("reverse=") + pick({"0", "1"});
        case 13:
            return std::string("service=") + pick({"up", "down"});
        default:
            return "";  // a frame
    }
}

std::vector<TraceEvent> someTrace(std::mt19937& random) {
    std::vector<TraceEvent> trace;
    double time = 0.0;
    for (int i = 0; i < 40; ++i) {
        time += static_cast<double>(random() % 4) * static_cast<double>(random() % 40) / 100.0;
        const std::string action = someAction(random);
        const std::string payload{static_cast<char>(1 + random() % 2), static_cast<char>(random() % 9)};
        trace.push_back(
            {time, action.empty() ? TraceAction(FrameEvent{{1, false, payload}}) : readTraceLine(action)->action});
    }
    return trace;
}

// The state is that of playing up to there: what clients see, and everything that is still to come.
TEST(Simulation, ASeekOrAStartLeadsToTheStateOfPlayingUpToThere) {
    for (unsigned seed = 0; seed < 100; ++seed) {
        std::mt19937 random(seed);
        const std::vector<TraceEvent> trace = someTrace(random);
        const bool initialValues = seed % 2 == 0;
        const double length = traceEnd(trace);
        const double place = std::round(length * static_cast<double>(random() % 100)) / 100.0;
        const double elsewhere = length * static_cast<double>(random() % 100) / 100.0;

        Bench played(1.0, initialValues);
        played.start(trace);
        played.pass(place);
        Bench sought(1.0, initialValues);
        sought.start(trace);
        sought.pass(elsewhere);
        sought.simulation.seek(place);
        Bench started(1.0, initialValues);
        started.start(trace, false, place);

        for (Bench* const other : {&sought, &started}) {
            EXPECT_EQ(played.everything(), other->everything()) << "seed " << seed << " at " << place;
            other->told();
            other->pass(5.0);
        }
        played.told();
        played.pass(5.0);
        const std::string then = played.told();
        EXPECT_EQ(sought.told(), then) << "seed " << seed << " at " << place;
        EXPECT_EQ(started.told(), then) << "seed " << seed << " at " << place;
        if (HasFailure()) {
            break;
        }
    }
}

}  // namespace
}  // namespace qvn::tools
