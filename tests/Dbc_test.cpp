#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "dbc/Reader.h"
#include "dbc/Values.h"

namespace qvn::dbc {
namespace {

Database read(const std::string& text, const Wanted& wanted) {
    std::istringstream input(text);
    return readDatabase(input, "a.dbc", wanted);
}

bool isAny(const std::string&) {
    return true;
}

Database read(const std::string& text) {
    return read(text, &isAny);
}

/// One standard message of 8 bytes with these signals.
Message withSignals(const std::string& signals) {
    return read("BO_ 291 ESP: 8 ECU\n" + signals).messages.at(0);
}

std::string errorIn(const std::string& text, const Wanted& wanted) {
    try {
        read(text, wanted);
    } catch (const SyntaxError& error) {
        return error.what();
    }
    return "accepted";
}

const char kWholeFile[] =
    "\xEF\xBB\xBFVERSION \"a \\\"quoted\\\" one\"\r\n\r\n"
    "// \"BO_ 1 of a remark\nNS_ :\n\tNS_DESC_ // what it may have\n\tBA_\n\tCM_\n\tBA_DEF_\n\tVAL_\n\tBO_TX_BU_\n\n"
    "BS_:\n\n"
    "BU_: ESP\n HUT\n"
    "VAL_TABLE_ OnOff 1 \"on\" 0 \"off\" ;\n\n"
    "BO_ 291 ESP_FD2: 8 ESP\n"
    " SG_ Speed : 7|16@0+ (0.05625,0) [0|3686.3] \"km/h\"  HUT,\n  CAM\n"
    " SG_ Valid : 16|1@1+ (1,0) [0|1] \"\" HUT\n"
    " SG_ Temperature : 24|8@1- (5E-1,-40) [-1.04E+2|23.5] \"\xB0"
    "C\" Vector__XXX\n\n"
    "BO_ 2566844693 Status: 64 HUT\n SG_ Ratio : 0|32@1- (1,0) [0|0] \"\" ESP\n\n"
    "BO_ 292 Unsteady: 8 ESP\n SG_ Wide : 0|64@1+ (1,0) [0|0] \"\" HUT//CAM\n\n"
    "BO_ 3221225472 VECTOR__INDEPENDENT_SIG_MSG: 0 Vector__XXX\n SG_ Loose : 0|8@1+ (1,0) [0|0] \"\" Vector__XXX\n\n"
    "BO_TX_BU_ 291 : ESP,HUT;\n"
    "SIG_GROUP_ 291 Group 1 : Speed Valid;\n"
    "CM_ \"a text;\nBO_ 1 of\nseveral lines\";\n"
    "CM_ BU_ ESP \"C:\\brakes\\\" ; \nCM_ \"\\\";\n// a remark\n"
    "BA_ \"GenMsgCycleTime\" BO_ 292 0;  // whenever it likes\n"
    "CM_ \"see \\\"x\\\"\nBO_ 7 there, or \\\"y\\\";\nABC\";\n"
    "BA_ \"GenMsgCycleTime\" BO_ 291 20;\n"
    "CM_ \"ends with \\\";\" ;\nCM_ BO_ 291 \"of the "
    "brakes\";\nCM_ SG_ 291 Speed \"over \\\"ground\\\"\";\n"
    "BA_DEF_ BO_  \"GenMsgCycleTime\" INT 0 65535;\n"
    "BA_DEF_ \"Kind\" ENUM \"a;\",\"b\";\n"
    "BA_DEF_DEF_  \"Kind\" \"b\";\n"
    "BA_DEF_DEF_  \"GenMsgCycleTime\" 100;\n"
    "BA_ \"Kind\" 0;\n"
    "BA_ \"SystemSignalLongSymbol\" SG_ 2566844693 Ratio \"Ratio_by_its_long_name\";\n"
    "BA_ \"GenMsgCycleTime\" BO_ 999 20;\n"
    "VAL_ Ignition 0 \"off\" ;\n"
    "VAL_ 291 Temperature -1 \"invalid\" 5 \"five\" ;\n"
    "VAL_ 291 Valid OnOff ;\n"
    "VAL_ 291 Gone 0 \"x\" ;\n"
    "VAL_ 292 Wide 18446744073709551615 \"invalid\" ;\n"
    "SIG_VALTYPE_ 2566844693 Ratio : 1;";

TEST(Dbc, ReadsMessagesAndSignalsAndPassesOverTheRest) {
    const Database database = read(kWholeFile);
    EXPECT_EQ(database.leftOut, std::vector<std::string>());
    const auto& messages = database.messages;
    ASSERT_EQ(messages.size(), 3U);
    const Message& standard = messages[0];
    EXPECT_EQ(standard.id, 291U);
    EXPECT_FALSE(standard.extended);
    EXPECT_EQ(standard.name, "ESP_FD2");
    EXPECT_EQ(standard.size, 8U);
    EXPECT_EQ(standard.cycleTime, 0.02);
    ASSERT_EQ(standard.signals.size(), 3U);
    const Signal& speed = standard.signals[0];
    EXPECT_EQ(speed.name, "Speed");
    EXPECT_EQ(speed.startBit, 7U);
    EXPECT_EQ(speed.bits, 16U);
    EXPECT_EQ(speed.order, ByteOrder::Motorola);
    EXPECT_EQ(speed.factor, 0.05625);
    EXPECT_EQ(speed.maximum, 3686.3);
    EXPECT_EQ(speed.unit, "km/h");
    EXPECT_EQ(standard.signals[1].values, (std::map<std::int64_t, std::string>{{0, "off"}, {1, "on"}}));
    const Signal& temperature = standard.signals[2];
    EXPECT_EQ(temperature.order, ByteOrder::Intel);
    EXPECT_EQ(temperature.type, ValueType::Signed);
    EXPECT_EQ(temperature.factor, 0.5);
    EXPECT_EQ(temperature.offset, -40.0);
    EXPECT_EQ(temperature.minimum, -104.0);
    EXPECT_EQ(temperature.values, (std::map<std::int64_t, std::string>{{-1, "invalid"}, {5, "five"}}));
    const Message& extended = messages[1];
    EXPECT_EQ(extended.id, 0x18FEF115U);
    EXPECT_TRUE(extended.extended);
    EXPECT_EQ(extended.cycleTime, 0.1) << "the default";
    EXPECT_EQ(extended.signals.at(0).type, ValueType::Float);
    EXPECT_EQ(extended.signals[0].name, "Ratio_by_its_long_name");
    EXPECT_EQ(messages[2].cycleTime, std::nullopt) << "0 is not the default";
    EXPECT_EQ(messages[2].signals.at(0).values, (std::map<std::int64_t, std::string>{{-1, "invalid"}}));
}

TEST(Dbc, LeavesOutWhatIsWrongUnlessItConcernsAWantedSignal) {
    const std::string before =
        "BO_ 291 ESP: 8 ECU\n SG_ Speed : 7|16@0+ (1,0) [0|9] \"\" X\n SG_ Page M : 16|8@1+ (1,0) [0|0] \"\" X\n"
        " SG_ Odd m1 : 24|8@1+ (1,0) [0|0] \"\" X\n";
    const std::string after = "BO_ 300 Last: 8 ECU\n SG_ Last : 0|8@1+ (1,0) [0|9] \"\" X\n";
    const std::string rest = " (1,0) [0|0] \"\" X\n";
    const struct {
        std::string text;
        const char* error;
        const char* concerned = "Odd";
    } cases[] = {
        {" SG_ Odd2 : 0|1600@1+" + rest,
         "5: expected a number of bits from 1 to 64 instead of '1600' in the signal BO_ 291 Odd2", "Odd2"},
        {" SG_ Odd : 0|8@1+" + rest,
         "5: expected a name that no other signal of the message has instead of 'Odd' in the message BO_ 291"},
        {"BO_ 292 Other 8\n SG_ Some : 0|8@1+" + rest + " SG_ Odd : 0|8@1+" + rest,
         "5: expected ':' instead of '8' in the message BO_ 292"},
        {"BO_ 292 Cut: eight\n SG_ Short : 0|8@1+" + rest + "BA_ \"SystemSignalLongSymbol\" SG_ 292 Short \"Odd\";\n",
         "5: expected a number of bytes instead of 'eight' in the message BO_ 292"},
        {"BO_ 291 Twin: 8 ECU\n SG_ Odd : 0|8@1+" + rest, "5: there are two messages BO_ 291; expected one"},
        {"BO_ 292 Pages: 8 ECU\n SG_ Plain : 0|8@1+" + rest + " SG_ Odd m1 : 0|8@1+" + rest,
         "5: the message Pages has multiplexed signals such as Odd; expected a signal with M that selects them"},
        {"BO_ 292 Pages: 8 ECU\n SG_ Odd m1 : 0|8@1+" + rest + " SG_ Page M : 0|8@2+" + rest,
         "7: expected a byte order, 0 or 1 instead of '2' in the signal BO_ 292 Page"},
        {"BA_ \"GenMsgCycleTime\" BO_ 291 -5;\n",
         "5: expected a cycle time in milliseconds instead of '-5' in the section BA_"},
        {"VAL_ 291 Odd 1 \"on\nthe\nbeam\"\n\n", "7: expected ';' after the text 'on?the?beam' in the section VAL_",
         ""},
        {" SG_ Long : 0|64@1+" + rest + "SIG_VALTYPE_ 291 Long : 1;\n",
         "6: expected the type of a signal of 64 bits instead of '1' in the section SIG_VALTYPE_", "Long"},
        {"SIG_VALTYPE_ 291 Odd : 0 x;\n", "5: expected ';' instead of 'x' in the section SIG_VALTYPE_"},
        {"SG_MUL_VAL_ 291 Odd Gone 1-1;\n",
         "5: expected a signal of the same message instead of 'Gone' in the section SG_MUL_VAL_"},
        {"SG_MUL_VAL_ 291 Odd Page 1-1\n", "5: expected ';' after '-1' in the section SG_MUL_VAL_", ""},
        {"VAL_ 291 Odd 1 \"x\" ;\nVAL_TABLE_ Broken one \"x\" ;\n",
         "6: expected a whole number or ';' instead of 'one' in the section VAL_TABLE_", ""},
        {"what is this;\n", "5: expected a keyword such as BO_ instead of 'what' at the beginning of a section", ""},
    };
    const auto none = [](const std::string&) { return false; };
    const Database two = read("BO_ 2 A: 8 X\n SG_ B : 0|99@1+" + rest + " SG_ C m1 : 0|8@1+" + rest, none);
    ASSERT_EQ(two.leftOut.size(), 2U);
    EXPECT_EQ(two.leftOut[0].find("a.dbc:1: the message A has multiplexed signals such as C"), 0U) << two.leftOut[0];
    EXPECT_TRUE(two.messages[0].signals.empty());
    EXPECT_EQ(read("VAL_TABLE_ Broken one \"x\" ;\n" + before).messages.size(), 1U) << "wrong before the first message";
    for (const auto& [text, error, concerned] : cases) {
        const std::string file = before + text + after;
        const Database database = read(file, [](const std::string& name) { return name == "Last"; });
        EXPECT_EQ(database.leftOut, std::vector<std::string>{std::string("a.dbc:") + error});
        EXPECT_EQ(database.messages.back().signals.at(0).name, "Last") << text;
        EXPECT_EQ(database.messages[0].signals.at(0).name, "Speed") << text;
        const auto isConcerned = [concerned = concerned](const std::string& name) {
            return concerned[0] == 0 || name == concerned;
        };
        EXPECT_EQ(errorIn(file, isConcerned), concerned[0] ? std::string("a.dbc:") + error : "accepted") << text;
    }
}

TEST(Dbc, DecodesBothByteOrdersAndEveryType) {
    const std::string bytes("\x12\x34\x56\x78\x9A\xBC\xDE\xF0", 8);
    const struct {
        const char* layout;
        std::uint64_t raw;
        double physical;
    } cases[] = {
        {"0|8@1+ (1,0)", 0x12, 18.0},
        {"4|8@1+ (1,0)", 0x41, 65.0},
        {"7|16@0+ (0.5,10)", 0x1234, 2340.0},
        {"3|8@0+ (1,0)", 0x23, 35.0},
        {"8|16@1+ (1,0)", 0x5634, 22068.0},
        {"59|4@0- (1,0)", 0x0, 0.0},
        {"63|4@0- (1,0)", 0xF, -1.0},
        {"40|8@1- (2,-1)", 0xBC, -137.0},
        {"0|64@1+ (1,0)", 0xF0DEBC9A78563412, 17356517385562371090.0},
        {"7|64@0- (1,0)", 0x123456789ABCDEF0, 1311768467463790320.0},
    };
    for (const auto& [layout, raw, physical] : cases) {
        const Message message = withSignals(std::string("SG_ S : ") + layout + " [0|0] \"\" X\n");
        EXPECT_EQ(rawValue(message.signals[0], bytes), raw) << layout;
        EXPECT_EQ(physicalValue(message.signals[0], bytes), physical) << layout;
    }
    const Message floats = withSignals(
        "SG_ F : 7|32@0- (2,0) [0|0] \"\" X\nSG_ D : 0|64@1- (1,1) [0|0] \"\" X\n"
        "SIG_VALTYPE_ 291 F : 1;\nSIG_VALTYPE_ 291 D 2;\n");
    EXPECT_EQ(physicalValue(floats.signals[0], std::string("\x3F\xC0\0\0", 4)), 3.0);
    EXPECT_EQ(physicalValue(floats.signals[1], std::string("\0\0\0\0\0\0\xF8\x3F", 8)), 2.5);
}

TEST(Dbc, ReadsNothingBeyondThePayload) {
    const Message message = withSignals(
        "SG_ I : 500|12@1+ (1,0) [0|0] \"\" X\nSG_ M : 497|10@0+ (1,0) [0|0] \"\" X\n"
        "SG_ Far : 524279|64@0+ (1,0) [0|0] \"\" X\n");
    const std::string longest(64, '\xFF');
    EXPECT_EQ(rawValue(message.signals[0], longest), 0xFFFU);
    EXPECT_EQ(rawValue(message.signals[1], longest), 0x3FFU);
    EXPECT_FALSE(rawValue(message.signals[0], longest.substr(1)));
    EXPECT_FALSE(rawValue(message.signals[1], longest.substr(1)));
    EXPECT_FALSE(physicalValue(message.signals[2], longest));
}

TEST(Dbc, MultiplexedSignalsAreInTheirFramesOnly) {
    const Message message = withSignals(
        "SG_ B m3M : 8|8@1+ (1,0) [0|0] \"\" X\n"
        "SG_ Page M : 0|8@1+ (1,0) [0|0] \"\" X\n"
        "SG_ A m0 : 8|8@1+ (1,0) [0|0] \"\" X\n"
        "SG_ C m0 : 16|8@1+ (1,0) [0|0] \"\" X\n"
        "SG_ Ring m9M : 16|8@1+ (1,0) [0|0] \"\" X\n"
        "SG_MUL_VAL_ 291 C B 1-2, 7-7;\nSG_MUL_VAL_ 291 Ring Ring 0 - 255;\n");
    const std::pair<std::string, const char*> cases[] = {
        {std::string("\0\0\0", 3), "Page A"},   {std::string("\3\2\0", 3), "B Page C"},
        {std::string("\3\7\0", 3), "B Page C"}, {std::string("\3\3\0", 3), "B Page"},
        {std::string("\1\1\0", 3), "Page"},     {"", "Page"},
    };
    for (const auto& [payload, present] : cases) {
        std::string names;
        for (const Signal& signal : message.signals) {
            names += isPresent(message, signal, payload) ? (names.empty() ? "" : " ") + signal.name : "";
        }
        EXPECT_EQ(names, present);
    }
}

TEST(Dbc, NamesTheLineAndTheWordThatIsWrong) {
    const std::string message = "BO_ 291 ESP: 8 ECU\n";
    const std::pair<std::string, const char*> cases[] = {
        {message + " SG_ Speed : 7|16@0+ (abc,0) [0|1] \"\" X",
         "2: expected a number instead of 'abc' in the signal BO_ 291 Speed"},
        {message + " SG_ Speed : 7|65@0+ (1,0)",
         "2: expected a number of bits from 1 to 64 instead of '65' in the signal BO_ 291 Speed"},
        {message + " SG_ Speed : 7|8@2+",
         "2: expected a byte order, 0 or 1 instead of '2' in the signal BO_ 291 Speed"},
        {message + " SG_ Speed n : 7|8",
         "2: expected ':', M, or m with a number instead of 'n' in the signal BO_ 291 Speed"},
        {message + " SG_ Speed : 7|8@1+ (1,0) [0|1] X",
         "2: expected a text in '\"' instead of 'X' in the signal BO_ 291 Speed"},
        {"BO_ 5000 ESP: 8 ECU",
         "1: expected an id up to 2047, or an extended one with bit 31 instead of '5000' in the message BO_ 5000"},
        {message + " SG_ A", "2: expected ':', M, or m with a number after 'A' in the signal BO_ 291 A"},
        {"// a remark\nBO_ 291 ESP 8", "2: expected ':' instead of '8' in the message BO_ 291"},
        {"BO_ 291 ESP: " + std::string(61, 'x'),
         "1: expected a number of bytes instead of 'xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx...' "
         "in "
         "the message BO_ 291"},
        {"BA_ \"GenMsgCycleTime\" BO_ 291 1e10;",
         "1: expected a cycle time in milliseconds instead of '1e10' in the section BA_"},
        {"BO_ 291", "1: expected a name after '291' in the message BO_ 291"},
        {"\nSG_ Speed", "2: expected a message BO_ before its signals instead of 'Speed' in the section SG_"},
        {"CM_ \"\n\n\";\nCM_ \"\n;", "4: the text that begins here has no end; expected another '\"'"},
        {"\x7F"
         "ELF",
         "1: expected a keyword such as BO_ instead of '?ELF' at the beginning of a section"},
    };
    for (const auto& [text, error] : cases) {
        EXPECT_EQ(errorIn(text, &isAny), std::string("a.dbc:") + error);
    }
}

}  // namespace
}  // namespace qvn::dbc
