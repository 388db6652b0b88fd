// The constant tables, row by row against data/expected_tables.txt, which knows nothing of them.

#include <gtest/gtest.h>
#include <vehicle/PropertyIds.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "common.base.canservice.pb.h"
#include "support/ExpectedTables.h"
#include "tables/DecodingRules.h"
#include "tables/MessageCatalogue.h"
#include "tables/RawBytes.h"
#include "tables/SetCatalogue.h"
#include "tables/SignalTable.h"
#include "tables/SortedByCode.h"
#include "tables/SubscriptionCodes.h"

namespace {

using namespace qvn::tables;
using namespace qvn::test;

std::string shortName(const std::string& name) {
    return name.substr(std::string("QVN_GET_").size());
}

TEST(Tables, SchemaHasEveryCode) {
    for (const Words& line : expected("code")) {
        can_service::CodeIdEnum parsed{};
        EXPECT_TRUE(can_service::CodeIdEnum_Parse(line[0], &parsed)) << line[0];
        EXPECT_EQ(static_cast<std::uint32_t>(parsed), number(line[1])) << line[0];
        EXPECT_EQ(can_service::CodeIdEnum_Name(parsed), line[0]);
    }
}

TEST(Tables, ASearchStaysInItsTable) {
    struct Row {
        std::uint32_t code;
    };
    const struct {
        Row table[2];
        Row behind;
    } memory = {{{1}, {3}}, {5}};
    EXPECT_EQ(findByCode(memory.table, 1), &memory.table[0]);
    EXPECT_EQ(findByCode(memory.table, 3), &memory.table[1]);
    for (const std::uint32_t unknown : {0u, 2u, 4u, 5u}) {
        EXPECT_EQ(findByCode(memory.table, unknown), nullptr) << unknown;
    }
}

TEST(Tables, DecodingRules) {
    const std::map<std::string, ValueKind> kinds = {
        {"integer", ValueKind::Integer}, {"float", ValueKind::Float}, {"switch", ValueKind::Switch}};
    const std::map<ValueKind, std::string> formats = {{ValueKind::Integer, " value:%d"},
                                                      {ValueKind::Float, " value:%f"},
                                                      {ValueKind::Switch, " value:%d, direct:%d"}};
    EXPECT_EQ(kDecodingRules.size(), expected("decode").size());
    for (const Words& line : expected("decode")) {
        SCOPED_TRACE(line[0]);
        const DecodingRow* const row = findDecodingRule(codeOf(line[0]));
        ASSERT_NE(row, nullptr);
        EXPECT_EQ(row->code, codeOf(line[0]));
        EXPECT_EQ(row->kind, kinds.at(line[1]));
        EXPECT_EQ(row->bytes, number(line[2]));
        EXPECT_EQ(row->factor, std::stod(line[3]));
        EXPECT_EQ(row->unit, line[4] == "-" ? "" : line[4]);
        EXPECT_EQ(row->direction, std::stoi(line[5]));
        const std::string format = "[%s][%d]" + shortName(line[0]) + formats.at(row->kind);
        EXPECT_STREQ(row->logFormat, line[6] == "logged" ? format.c_str() : nullptr);
    }
}

TEST(Tables, SetSignals) {
    EXPECT_EQ(kSetSignals.size(), expected("set").size());
    for (const Words& line : expected("set")) {
        SCOPED_TRACE(line[0]);
        const SetRow* const row = findSetSignal(codeOf(line[0]));
        ASSERT_NE(row, nullptr);
        EXPECT_EQ(row->bytes, number(line[1]));
        EXPECT_EQ(row->offset, std::stoi(line[2]));
        EXPECT_EQ(row->logLine, std::stoi(line[3]));
        EXPECT_EQ(row->logFormat, "[%s][%d]" + shortName(line[0]) + " value:%d");
    }
}

TEST(Tables, EveryFunctionHasTheSameSignals) {
    const std::vector<Words>& rows = expected("row");
    ASSERT_EQ(kSignalTableRows, rows.size());
    for (const VehilceClientInfo* const table :
         {avm_signal_table, rvc_signal_table, hap_signal_table, dms_signal_table, oms_signal_table}) {
        for (std::size_t i = 0; i < rows.size(); ++i) {
            SCOPED_TRACE(i);
            EXPECT_EQ(table[i].codeId, codeOf(rows[i][0]));
            EXPECT_EQ(table[i].direction, 1);
            EXPECT_EQ(table[i].propertyType, std::stoi(rows[i][1]));
            EXPECT_EQ(table[i].areaId, 0x01000000u);
            EXPECT_EQ(table[i].status, 0);
            EXPECT_EQ(table[i].property, number(rows[i][2]));
        }
    }
}

TEST(Tables, MessagesAndSignalLists) {
    std::map<std::string, std::vector<std::string>> lists;
    for (const Words& line : expected("list")) {
        lists[line[0]].push_back(line[1]);
    }
    const auto checkList = [&](const std::string& name, const SignalListRow* rows) {
        for (const std::string& entry : lists.at(name)) {
            std::string stored = entry;
            std::replace(stored.begin(), stored.end(), '.', ' ');
            stored.resize(sizeof rows->name);
            EXPECT_EQ(std::string(rows->name, sizeof rows->name), stored);
            EXPECT_EQ(rows->code_id, codeOf(entry.substr(0, entry.find('.')))) << entry;
            ++rows;
        }
        lists.erase(name);
    };

    EXPECT_EQ(kMessages.size(), expected("message").size());
    for (const Words& line : expected("message")) {
        SCOPED_TRACE(line[0]);
        const MessageRow* const row = findMessage(codeOf(line[0]));
        ASSERT_NE(row, nullptr);
        EXPECT_EQ(row->logLine, std::stoi(line[1]));
        EXPECT_EQ(row->logFormat, "[%s][%d]feedbackSignalStatus " + line[0] +
                                      "  signal id:%d, signal name:%s, property_id:%d, status:%d");
        ASSERT_EQ(row->signals.size(), lists.at(line[0] + "_signals").size());
        checkList(line[0] + "_signals", row->signals.begin());
    }
    for (const SetMessageRow& row : kSetMessages) {
        SCOPED_TRACE(row.name);
        const std::string name = row.name + std::string("_signals");
        ASSERT_EQ(row.signals.size(), lists.at(name).size());
        checkList(name, row.signals.begin());
    }
    EXPECT_TRUE(lists.empty());
}

TEST(Tables, SubscriptionOrder) {
    const std::vector<Words>& lines = expected("subscribe");
    ASSERT_EQ(kSubscriptionCodes.size(), lines.size());
    for (std::size_t i = 0; i < lines.size(); ++i) {
        EXPECT_EQ(kSubscriptionCodes[i], codeOf(lines[i][0])) << i;
    }
}

TEST(Tables, PropertiesAreNamedByTheirSignals) {
    using namespace qvn::platform::vehicle;
    std::map<int, std::string> firstNames;
    for (const Words& row : expected("row")) {
        const int property = static_cast<int>(number(row[2]));
        const std::string& first = firstNames.emplace(property, shortName(row[0])).first->second;
        EXPECT_EQ(propertyId(shortName(row[0]).c_str()), property) << row[0];
        EXPECT_EQ(propertyName(property), first);
    }
    for (const char* const name : {"", "VehSpd", "QVN_GET_ESP_FD2_VehSpd", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(propertyId(name), 0);
    }
    EXPECT_EQ(propertyName(0), nullptr);
    EXPECT_EQ(ids::ESP_FD2_VehSpd, 0x21600E1F);
}

TEST(Tables, OtherCodesHaveNoRow) {
    for (const std::uint32_t code : {0u, 0x00330000u, 0x02440001u, 0x02440F61u, 0xFFFFFFFDu, 0xFFFFFFFFu}) {
        EXPECT_EQ(findDecodingRule(code), nullptr) << std::hex << code;
        EXPECT_EQ(findMessage(code), nullptr) << std::hex << code;
        EXPECT_EQ(findSetSignal(code), nullptr) << std::hex << code;
    }
}

TEST(Tables, TheFirstRowOutOfOrderIsFound) {
    struct Row {
        std::uint32_t code;
    };
    const Row sorted[] = {{1}, {2}, {0xFFFFFFFF}};
    const Row swapped[] = {{1}, {3}, {2}, {1}};
    const Row repeated[] = {{1}, {1}};
    EXPECT_EQ(firstUnsortedRow(sorted), 3u);
    EXPECT_EQ(firstUnsortedRow(swapped), 2u);
    EXPECT_EQ(firstUnsortedRow(repeated), 1u);
}

TEST(RawBytes, HoldTheLowBitsHighestFirst) {
    const struct {
        std::uint32_t bytes;
        std::uint32_t quantity;
        std::string expected;
    } cases[] = {
        {1, 0x05, std::string("\x05", 1)},        {1, 0x2345, std::string("\x45", 1)},
        {1, 0xFFFFFFFF, std::string("\xFF", 1)},  {2, 300, std::string("\x01\x2C", 2)},
        {2, 0x10000, std::string("\x00\x00", 2)}, {2, 0xFFFFFFFF, std::string("\xFF\xFF", 2)},
    };
    for (const auto& [bytes, quantity, expected] : cases) {
        EXPECT_EQ(rawBytes(quantity, bytes), expected) << quantity;
    }
}

TEST(RawBytes, MissingOnesCountAsZeroAndFurtherOnesNotAtAll) {
    EXPECT_EQ(numberIn("", 2), 0u);
    EXPECT_EQ(numberIn("\x01", 2), 0x100u);
    EXPECT_EQ(numberIn("\xFF\xFE\x55", 2), 0xFFFEu);
    EXPECT_EQ(numberIn("\xFF\xFE", 1), 0xFFu);
}

}  // namespace
