#include "can-service-sim/can/CandumpReader.h"

#include <gtest/gtest.h>

#include <sstream>

#include "support/ErrorOf.h"

namespace qvn::tools {
namespace {

std::vector<TraceEvent> readLog(const std::string& text) {
    std::istringstream input(text);
    return readCandump(input, "a.log", [](const CanFrame& frame) { return frame.id != 0x7FF; });
}

TEST(CandumpReader, ReadsTheFramesThatCarrySomething) {
    const auto events = readLog(
        "(1436509052.250000) can0 123#DEADbeef\n"
        "\n"
        "(1436509052.000000) vcan0 00000123# T\r\n"
        "(1436509053.0)  can0   123##1" +
        std::string(128, 'A') +
        "\n"
        "(1436509053.5) can0 123#1122334455667788_C R\n"
        "(1436509051.000000) can0 123#R8\n"
        "(1436509054.000000) can0 20000004#0000000000000000\n"
        "(1436509054.000000) can0 7FF#00\n");
    ASSERT_EQ(events.size(), 4U);
    const struct {
        double time;
        bool extended;
        std::string payload;
    } expected[] = {{1.0, true, ""},
                    {1.25, false, "\xDE\xAD\xBE\xEF"},
                    {2.0, false, std::string(64, '\xAA')},
                    {2.5, false, "\x11\x22\x33\x44\x55\x66\x77\x88"}};
    for (std::size_t i = 0; i < events.size(); ++i) {
        const CanFrame& frame = std::get<FrameEvent>(events[i].action).frame;
        EXPECT_EQ(events[i].time, expected[i].time) << "from the earliest frame on";
        EXPECT_EQ(frame.id, 0x123U);
        EXPECT_EQ(frame.extended, expected[i].extended);
        EXPECT_EQ(frame.payload, expected[i].payload);
    }
}

TEST(CandumpReader, NamesThePositionAndTheWordThatIsWrong) {
    const std::string id = " is no CAN id; expected 3 hexadecimal digits up to 7FF, or 8 for an extended one";
    const std::pair<const char*, std::string> cases[] = {
        {"can0 123 [2] 11 22",
         "'can0' is not a time; expected a line as 'candump -l' writes it, such as "
         "(1436509052.249713) can0 123#DEADBEEF"},
        {"(now) can0 123#00", "'now' is not a number; expected a time in seconds"},
        {"(1e300) can0 123#00", "'1e300' is out of range; expected a time in seconds from 0 to 1e+10"},
        {"(9e9) can0 123#00", "this time is more than 1000000 s from another one in the log"},
        {"(1) can0", "'' is not a frame; expected ID#BYTES, ID##FLAGSBYTES of CAN FD, or ID#R"},
        {"(1) can0 12#00", "'12'" + id},
        {"(1) can0 8FF#00", "'8FF'" + id},
        {"(1) can0 12G#00", "'12G'" + id},
        {"(1) can0 123#0", "'0' are no raw bytes; expected pairs of hexadecimal digits, at most 64 bytes"},
        {"(1) can0 123#112233445566778899",
         "'123#112233445566778899' has more than 8 bytes; expected '##' in a frame of CAN FD"},
        {"(1) can0 123#00 X", "'X' is not expected here; R (received), T (transmitted) or nothing follows a frame"},
    };
    for (const auto& [line, error] : cases) {
        EXPECT_EQ(errorOf([text = std::string(line)] { readLog("(1) can0 123#00\n" + text); }), "a.log:2: " + error);
    }
}

}  // namespace
}  // namespace qvn::tools
