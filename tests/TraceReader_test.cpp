#include "can-service-sim/trace/TraceReader.h"

#include <gtest/gtest.h>

#include <sstream>

#include "can-service-sim/Generator.h"
#include "can-service-sim/trace/TraceCut.h"
#include "desk/Number.h"
#include "desk/PhysicalValue.h"
#include "support/ErrorOf.h"

namespace qvn::tools {
namespace {

std::vector<TraceEvent> read(const std::string& text) {
    std::istringstream input(text);
    return readTrace(input, "a.trace");
}

std::string errorIn(const std::string& text) {
    return errorOf([&] { read(text); });
}

TEST(TraceReader, ReadsEveryKindOfEvent) {
    const auto events = read(
        "\xEF\xBB\xBF# parking\n"
        "\n"
        "(0.000) BCM1_DrvDoorSts#00\n"
        "(0.500) ESP_FD2_VehSpd=4.5        physical value, encoded by the signal's own rule\n"
        "  (1.2) HAP_FD3!timeout\r\n"
        "(2.000) QVN_GET_HAP_FD3!ok # back\n"
        "(2.5)reverse=1                 the GPIO line\n"
        "(3) service=down\n"
        "(4) 0x031902D0#aF01\n"
        "(5) BCM1_DrvDoorSts!stop\n");
    ASSERT_EQ(events.size(), 8U);
    EXPECT_EQ(events[0].time, 0.0);
    EXPECT_EQ(std::get<SignalEvent>(events[0].action).code, 0x031902D0U);
    EXPECT_EQ(std::get<SignalEvent>(events[0].action).raw, std::string(1, '\0'));
    EXPECT_EQ(events[1].time, 0.5);
    EXPECT_EQ(std::get<SignalEvent>(events[1].action).raw, std::string("\0P", 2));
    EXPECT_EQ(std::get<MessageEvent>(events[2].action).code, 0x02980000U);
    EXPECT_TRUE(std::get<MessageEvent>(events[2].action).timedOut);
    EXPECT_FALSE(std::get<MessageEvent>(events[3].action).timedOut);
    EXPECT_TRUE(std::get<ReverseEvent>(events[4].action).engaged);
    EXPECT_FALSE(std::get<ServiceEvent>(events[5].action).up);
    EXPECT_EQ(std::get<SignalEvent>(events[6].action).raw, "\xAF\x01");
    EXPECT_EQ(std::get<StopEvent>(events[7].action).code, 0x031902D0U);
}

TEST(TraceReader, ReadsCycles) {
    const auto events = read(
        "(1) ESP_FD2_VehSpd=4.5 every 0.1 for 2.0\n"
        "(2) ESP_FD2_VehSpd=4.5   every 0.5   # aligned\n");
    const Cycle limited = std::get<SignalEvent>(events[0].action).cycle.value();
    EXPECT_EQ(limited.period, 0.1);
    EXPECT_EQ(limited.duration, 2.0);
    const Cycle endless = std::get<SignalEvent>(events[1].action).cycle.value();
    EXPECT_EQ(endless.period, 0.5);
    EXPECT_FALSE(endless.duration);
    EXPECT_EQ(traceEnd(events), 3.0);
}

TEST(TraceReader, PlaysInTheOrderOfTime) {
    const auto events = read("(2) reverse=1\n(1) reverse=0\n(1) service=up\n");
    EXPECT_FALSE(std::get<ReverseEvent>(events[0].action).engaged);
    EXPECT_TRUE(std::get<ServiceEvent>(events[1].action).up);
    EXPECT_TRUE(std::get<ReverseEvent>(events[2].action).engaged);
}

TEST(TraceReader, NamesThePositionAndTheWordThatIsWrong) {
    const std::string kinds =
        "expected SIGNAL#BYTES, SIGNAL=VALUE, SIGNAL!stop, MESSAGE!timeout, MESSAGE!ok, reverse=1|0 or service=up|down";
    const std::string bytes = "are no raw bytes; expected pairs of hexadecimal digits, at most 64 bytes";
    const std::string extra =
        "is not expected here; a signal may be followed by 'every SECONDS' and 'for SECONDS', a remark begins with '#' "
        "or two blanks";
    const std::pair<const char*, std::string> cases[] = {
        {"(0.5 reverse=1", "'(0.5 reverse=1' has no closing ')'; expected a time such as (0.500)"},
        {"(soon) reverse=1", "'soon' is not a number; expected a time in seconds"},
        {"(-1) reverse=1", "'-1' is out of range; expected a time in seconds from 0 to 1000000"},
        {"reverse=1", "'reverse=1' has no time; expected one in front, such as (0.500)"},
        {"(1)", "'' is not an event; " + kinds},
        {"(1) =3", "'=3' is not an event; " + kinds},
        {"(1) reverse=2", "'2' is not known here; expected 1 or 0"},
        {"(1) service=on", "'on' is not known here; expected up or down"},
        {"(1) BCM1_DrvDoorSts#0", "'0' " + bytes},
        {"(1) BCM1_DrvDoorSts#0g", "'0g' " + bytes},
        {"(1) BCM1_DrvDorSts#00", "unknown received signal 'BCM1_DrvDorSts'; did you mean BCM1_DrvDoorSts?"},
        {"(1) HAP_FD33!ok", "unknown message 'HAP_FD33'; did you mean HAP_FD3, HAP_FD1 or HAP_FD2?"},
        {"(1) HAP_FD3!late",
         "'late' is not known here; expected MESSAGE!timeout, !ok or !silence, SIGNAL!stop, !freeze or !thaw, or "
         "either with !delay SECONDS"},
        {"(1) BCM1_DrvDoorSts=256", "value 256 does not fit; expected a whole number from 0 to 255"},
        {"(1) BCM1_DrvDoorSts=ajar", "'ajar' is not a number; expected a physical value or one of: closed, open"},
        {"(1) 0x12345678=1", "signal 0x12345678 has no decoding rule; give its raw bytes as 0x12345678#00"},
        {"(1) ESP_FD2_VehSpd=1 every", "'' is not a number; expected a period in seconds"},
        {"(1) ESP_FD2_VehSpd=1 every 0", "'0' is out of range; expected a period in seconds from 0.001 to 1000000"},
        {"(1) ESP_FD2_VehSpd=1 evry 0.1", "'evry' " + extra},
        {"(1) reverse=1 every 0.1", "'every' " + extra},
    };
    for (const auto& [line, error] : cases) {
        EXPECT_EQ(errorIn("(0) reverse=0\n\n" + std::string(line) + "\n"), "a.trace:3: " + error);
    }
}

TEST(TraceReader, SurvivesWhatIsNoTextAtAll) {
    const char bytes[] =
        "\x7F"
        "ELF\0\0(((\xFF)#=!";
    const std::string noise(bytes, sizeof bytes - 1);
    EXPECT_EQ(errorIn(noise).substr(0, 11), "a.trace:1: ");
    EXPECT_LT(errorIn("(1) " + std::string(100000, 'x') + "=1").size(), 200U) << "a long word is shortened";
    EXPECT_TRUE(read("").empty());
}

/// The physical values of a generator, to its end or ten of them.
std::string courseOf(const std::string& line) {
    const std::optional<TraceEvent> event = readTraceLine(line);
    const auto& generate = std::get<GenerateEvent>(event->action);
    std::string values;
    for (std::uint64_t tick = 0; tick < 10 && tick <= generate.generator->lastTick().value_or(tick); ++tick) {
        values += decodedText(*tables::findDecodingRule(generate.code), generate.generator->rawAt(tick)) + " ";
    }
    return values;
}

TEST(Generator, GivesACourseOfValues) {
    EXPECT_EQ(courseOf("ESP_FD2_VehSpd=ramp 0..9 for 1 every 0.25"), "0 2.25 4.5 6.75 9 ");
    EXPECT_EQ(courseOf("ESP_FD2_VehSpd=ramp 0..9 every 0.75 for 1"), "0 6.75 9 ") << "to the end, in either order";
    EXPECT_EQ(courseOf("CSA2_SteerWheelAng=sine 10..20 over 4 for 2 every 1"), "10 15 20 ");
    EXPECT_EQ(courseOf("DCT5_TGS_LEVER=ramp R..P for 0.2 every 0.1"), "2 1 0 ");
    EXPECT_EQ(courseOf("CSA2_SteerWheelAng=sine 10..20 over 4 every 1 for 5"), "10 15 20 15 10 15 ");
    EXPECT_EQ(courseOf("DCT5_TGS_LEVER=step P,R,7 every 0.1  each of them"), "0 2 7 0 2 7 0 2 7 0 ");
    const std::string random = courseOf("HAP_FD1_APS_ProcBar=random 10..20 seed 4");
    EXPECT_EQ(random, courseOf("HAP_FD1_APS_ProcBar=random 10..20 seed 4"));
    EXPECT_NE(random, courseOf("HAP_FD1_APS_ProcBar=random 10..20"));
    EXPECT_EQ(random.size(), 30U) << random << "all of two digits";
    const std::pair<const char*, const char*> mistakes[] = {
        {"ESP_FD2_VehSpd=ramp 0..9", "the line ends too early; expected 'for' and the ramp's duration in seconds"},
        {"ESP_FD2_VehSpd=ramp 0..9 for 1 for 2", "'for' is not expected here"},
        {"ESP_FD2_VehSpd=1 for 2", "'for' is not expected here without 'every SECONDS'"},
        {"ESP_FD2_VehSpd=ramp 0..9 over 1", "'over' is not expected here; expected 'for' and the ramp's"},
        {"ESP_FD2_VehSpd=sine 0 over 1", "'0' is not a range; expected FROM..TO"},
        {"DCT5_TGS_LEVER=step P,300", "value 300 does not fit; expected a whole number from 0 to 255"},
        {"DCT5_TGS_LEVER=step P,N", "'N' is not a number; expected a physical value or one of: P, R"},
        {"EPB1!delay soon", "'soon' is not a number; expected a delay in seconds"},
        {"EPB1_EPBSts!silence", "unknown message 'EPB1_EPBSts'"},
    };
    for (const auto& [line, error] : mistakes) {
        EXPECT_EQ(errorOf([&line = line] { readTraceLine(line); }).find(error), 0U)
            << errorOf([&line = line] { readTraceLine(line); });
    }
}

TEST(Generator, CountsPeriodsThatAreNoBinaryFractions) {
    for (const double period : {0.001, 0.01, 0.05, 0.07, 0.1, 0.3}) {
        for (std::uint64_t count = 1; count < 500; ++count) {
            EXPECT_EQ(periodsIn(static_cast<double>(count) * period, period), count) << period;
            EXPECT_EQ(periodsIn((static_cast<double>(count) + 0.5) * period, period), count + 1) << period;
        }
    }
    EXPECT_EQ(periodsIn(0.001, 1e6), 1U);
    EXPECT_EQ(lastTick({0.1, 0.3}), 2U);
}

TEST(TraceCut, PlaysAPart) {
    const auto timesOf = [](std::optional<double> from, std::optional<double> to) {
        std::string times;
        for (const TraceEvent& event :
             cutTrace(read("(0) reverse=1\n(1) reverse=0\n(1.5) reverse=1\n(3) reverse=0\n"), from, to)) {
            times += formatNumber(*event.time) + (std::get<ReverseEvent>(event.action).engaged ? "+ " : "- ");
        }
        return times;
    };
    EXPECT_EQ(timesOf({}, {}), "0+ 1- 1.5+ 3- ");
    EXPECT_EQ(timesOf(1.0, 1.5), "0- 0.5+ ");
    EXPECT_EQ(timesOf({}, 1.0), "0+ 1- ");
    EXPECT_EQ(timesOf(1.2, {}), "0.3+ 1.8- ");
    EXPECT_EQ(timesOf(5.0, {}), "");
}

}  // namespace
}  // namespace qvn::tools
