#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "dbc/Reader.h"
#include "dbc/Values.h"

namespace qvn::dbc {
namespace {

Database read(const std::string& text) {
    std::istringstream input(text);
    return readDatabase(input, "a.dbc");
}

/// One standard message of 8 bytes with these signals.
Message withSignals(const std::string& signals) {
    return read("BO_ 291 ESP: 8 ECU\n" + signals).messages.at(0);
}

std::string errorIn(const std::string& text) {
    try {
        read(text);
    } catch (const SyntaxError& error) {
        return error.what();
    }
    return "accepted";
}

const char kWholeFile[] =
    "\xEF\xBB\xBFVERSION \"a \\\"quoted\\\" one\"\r\n\r\n"
    "NS_ :\n\tNS_DESC_\n\tCM_\n\tBA_DEF_\n\tVAL_\n\tBO_TX_BU_\n\n"
    "BS_:\n\n"
    "BU_: ESP\n HUT\n"
    "VAL_TABLE_ OnOff 1 \"on\" 0 \"off\" ;\n\n"
    "BO_ 291 ESP_FD2: 8 ESP\n"
    " SG_ Speed : 7|16@0+ (0.05625,0) [0|3686.3] \"km/h\"  HUT,\n  CAM\n"
    " SG_ Valid : 16|1@1+ (1,0) [0|1] \"\" HUT\n"
    " SG_ Temperature : 24|8@1- (5E-1,-40) [-1.04E+2|23.5] \"\xB0"
    "C\" Vector__XXX\n\n"
    "BO_ 2566844693 Status: 64 HUT\n SG_ Ratio : 0|32@1- (1,0) [0|0] \"\" ESP\n\n"
    "BO_ 3221225472 VECTOR__INDEPENDENT_SIG_MSG: 0 Vector__XXX\n SG_ Loose : 0|8@1+ (1,0) [0|0] \"\" Vector__XXX\n\n"
    "BO_TX_BU_ 291 : ESP,HUT;\n"
    "SIG_GROUP_ 291 Group 1 : Speed Valid;\n"
    "CM_ \"a text;\nBO_ 1 of\nseveral lines\";\n"
    "CM_ BU_ ESP \"brakes\";\nCM_ BO_ 291 \"of the brakes\";\nCM_ SG_ 291 Speed \"over \\\"ground\\\"\";\n"
    "BA_DEF_ BO_  \"GenMsgCycleTime\" INT 0 65535;\n"
    "BA_DEF_ \"Kind\" ENUM \"a;\",\"b\";\n"
    "BA_DEF_DEF_  \"Kind\" \"b\";\n"
    "BA_DEF_DEF_  \"GenMsgCycleTime\" 100;\n"
    "BA_ \"Kind\" 0;\n"
    "BA_ \"GenMsgCycleTime\" BO_ 291 20;\n"
    "BA_ \"SystemSignalLongSymbol\" SG_ 2566844693 Ratio \"Ratio_by_its_long_name\";\n"
    "BA_ \"GenMsgCycleTime\" BO_ 999 20;\n"
    "VAL_ Ignition 0 \"off\" ;\n"
    "VAL_ 291 Temperature -1 \"invalid\" 5 \"five\" ;\n"
    "VAL_ 291 Valid OnOff ;\n"
    "VAL_ 291 Gone 0 \"x\" ;\n"
    "SIG_VALTYPE_ 2566844693 Ratio : 1;";

TEST(Dbc, ReadsMessagesAndSignalsAndPassesOverTheRest) {
    const auto messages = read(kWholeFile).messages;
    ASSERT_EQ(messages.size(), 2U);
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
        "SG_ Page M : 0|8@1+ (1,0) [0|0] \"\" X\n"
        "SG_ A m0 : 8|8@1+ (1,0) [0|0] \"\" X\n"
        "SG_ B m3M : 8|8@1+ (1,0) [0|0] \"\" X\n"
        "SG_ C m0 : 16|8@1+ (1,0) [0|0] \"\" X\n"
        "SG_ Ring m9M : 16|8@1+ (1,0) [0|0] \"\" X\n"
        "SG_MUL_VAL_ 291 C B 1-2, 7-7;\nSG_MUL_VAL_ 291 Ring Ring 0 - 255;\n");
    const std::pair<std::string, const char*> cases[] = {
        {std::string("\0\0\0", 3), "Page A"},   {std::string("\3\2\0", 3), "Page B C"},
        {std::string("\3\7\0", 3), "Page B C"}, {std::string("\3\3\0", 3), "Page B"},
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

TEST(Dbc, LeavesOutWhatIsWrongAboutSignalsThatNobodyWants) {
    const std::string text =
        "// written by hand\n"
        "BO_ 1 Good: 8 X // the first\n SG_ Speed : 0|8@1+ (1,0) [0|1] \"\" X\n"
        " SG_ Huge : 0|1600@1+ (1,0) [0|1] \"\" X\n SG_ Bare m : 0|8@1+ (1,0) [0|1] \"\" X\n"
        " SG_ Last : 8|8@1+ (1,0) [0|1] \"\" X\n"
        "BO_ 5000 FarId: 8 X\n SG_ A : 0|8@1+ (1,0) [0|1] \"\" X\n SG_ B : 0|8@1+ (1,0) [0|1] \"\" X\n"
        "BO_ 6000 FarToo: 8 X\n"
        "BO_ 1 Twice: 8 X\n SG_ Again : 0|8@1+ (1,0) [0|1] \"\" X\n"
        "BO_ 2 NoRoot: 8 X\n SG_ Part m1 : 0|8@1+ (1,0) [0|1] \"\" X\n SG_ Whole : 0|8@1+ (1,0) [0|1] \"\" X\n"
        "CM_ \"C:\\path\\\";\n"
        "VAL_ 1 Last 0 \"zero\" one ;\n"
        "VAL_ 2 Whole 18446744073709551615 \"most\" 1 \"one\"\n"
        "BA_ \"GenMsgCycleTime\" BO_ 1 20;\n";
    const auto read = [&text](const std::string& wanted) {
        std::istringstream input(text);
        return readDatabase(input, "a.dbc", [wanted](std::string_view name) { return name == wanted; });
    };
    const Database database = read("Speed");
    std::string names;
    for (const Message& message : database.messages) {
        names += message.name + ":";
        for (const Signal& signal : message.signals) {
            names += " " + signal.name;
        }
        names += "\n";
    }
    EXPECT_EQ(names, "Good: Speed Last\nNoRoot: Whole\n");
    EXPECT_EQ(database.messages[0].cycleTime, 0.02);
    EXPECT_EQ(database.messages[1].signals[0].values, (std::map<std::int64_t, std::string>{{-1, "most"}, {1, "one"}}));
    std::string leftOut;
    for (const std::string& line : database.leftOut) {
        leftOut += line + "\n";
    }
    for (const char* const line :
         {"a.dbc:4: expected a number of bits from 1 to 64 instead of '1600' in the signal BO_ 1 Huge; left out\n",
          "a.dbc:5: expected ':', M, or m with a number instead of 'm' in the signal BO_ 1 Bare; left out\n",
          "a.dbc:7: expected an id up to 2047, or an extended one with bit 31 instead of '5000' in the message BO_ "
          "5000; "
          "left out, as are 1 more like it\n",
          "a.dbc:11: there are two messages BO_ 1; expected one; left out\n",
          "a.dbc:13: the message NoRoot has multiplexed signals such as Part; expected a signal with M that selects "
          "them; left out\n",
          "a.dbc:17: expected a whole number instead of 'one' in the section VAL_; left out\n",
          "a.dbc:18: expected ';' at the end of the section; left out\n"}) {
        EXPECT_NE(leftOut.find(line), std::string::npos) << line << leftOut;
    }
    for (const char* const wanted : {"Huge", "Bare", "B", "Again", "Part", "Last"}) {
        EXPECT_THROW(read(wanted), SyntaxError) << wanted;
    }
}

TEST(Dbc, TakesTheRootOfMultiplexingWhereverItStands) {
    const Message message =
        withSignals("SG_ B m3M : 8|8@1+ (1,0) [0|0] \"\" X\nSG_ Page M : 0|8@1+ (1,0) [0|0] \"\" X\n");
    EXPECT_EQ(message.signals[0].selection->multiplexor, 1U);
    EXPECT_FALSE(message.signals[1].selection);
}

TEST(Dbc, ACycleTimeOfZeroIsNone) {
    const auto messages =
        read("BO_ 1 A: 8 X\nBO_ 2 B: 8 X\nBA_DEF_DEF_ \"GenMsgCycleTime\" 100;\nBA_ \"GenMsgCycleTime\" BO_ 1 0;\n")
            .messages;
    EXPECT_EQ(messages.at(0).cycleTime, std::nullopt);
    EXPECT_EQ(messages.at(1).cycleTime, 0.1);
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
        {message + " SG_ A m1 : 0|8@1+ (1,0) [0|1] \"\" X",
         "1: the message ESP has multiplexed signals such as A; expected a signal with M that selects them"},
        {message + " SG_ A : 0|8@1+ (1,0) [0|1] \"\" X\n SG_ A :",
         "3: expected a name that no other signal of the message has instead of 'A' in the message BO_ 291"},
        {message + message + " SG_ A : 0|8@1+ (1,0) [0|1] \"\" X", "2: there are two messages BO_ 291; expected one"},
        {"BO_ 5000 ESP: 8 ECU\n SG_ A",
         "1: expected an id up to 2047, or an extended one with bit 31 instead of '5000' in the message BO_ 5000"},
        {message + " SG_ A",
         "2: expected ':', M, or m with a number instead of the end of the file in the signal BO_ 291 A"},
        {"BO_ 291 ESP 8\n SG_ A", "1: expected ':' instead of '8' in the message BO_ 291"},
        {"\nSG_ Speed", "2: expected a message BO_ before its signals instead of 'Speed' in the section SG_"},
        {"CM_ \"\n\n\";\nCM_ \"\n;", "4: the text that begins here has no end; expected another '\"'"},
        {"BA_ \"GenMsgCycleTime\" BO_ 291 -5;",
         "1: expected a cycle time in milliseconds instead of '-5' in the section BA_"},
        {message + " SG_ A : 0|16@1+ (1,0) [0|1] \"\" X\nSIG_VALTYPE_ 291 A : 1;",
         "3: expected the type of a signal of 16 bits instead of '1' in the section SIG_VALTYPE_"},
        {message + " SG_ A : 0|64@1+ (1,0) [0|1] \"\" X\nSIG_VALTYPE_ 291 A : 1;",
         "3: expected the type of a signal of 64 bits instead of '1' in the section SIG_VALTYPE_"},
        {"\x7F"
         "ELF",
         "1: expected a keyword such as BO_ instead of '?ELF' at the beginning of a section"},
    };
    for (const auto& [text, error] : cases) {
        EXPECT_EQ(errorIn(text), std::string("a.dbc:") + error);
    }
}

}  // namespace
}  // namespace qvn::dbc
