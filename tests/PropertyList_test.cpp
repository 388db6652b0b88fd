// docs/properties.md against data/expected_tables.txt: what the list says of a signal, and under which message.

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "support/ExpectedTables.h"

namespace {

using namespace qvn::test;

std::string bytesText(const std::string& bytes) {
    return bytes + (bytes == "1" ? " byte" : " bytes");
}

/// By the signal's name: what its last column should hold.
std::map<std::string, std::string> expectedRules() {
    std::map<std::string, std::string> rules;
    for (const Words& line : expected("decode")) {
        rules[line[0]] = line[1] + ", " + bytesText(line[2]) + (line[3] == "1" ? "" : " × " + line[3] + " " + line[4]) +
                         (line[1] == "switch" ? ", direction " + line[5] : "");
    }
    for (const Words& line : expected("set")) {
        rules[line[0]] = bytesText(line[1]) + (line[2] == "0" ? "" : ", offset " + line[2]);
    }
    return rules;
}

TEST(PropertyList, HoldsEverySignalUnderItsMessage) {
    const std::size_t prefix = std::string("QVN_GET_").size();
    const std::map<std::string, std::string> rules = expectedRules();
    std::map<std::string, std::string> rows;  // by a section's heading and the name that follows it
    for (const Words& line : expected("list")) {
        const std::string message = line[0].substr(prefix, line[0].rfind("_signals") - prefix);
        const std::string signal = line[1].substr(0, line[1].find('.'));
        const std::vector<int> properties = propertiesOf(signal);
        if (properties.empty()) {
            continue;  // no property sets QVN_SET_HUT25_CarWashMode_Req
        }
        char property[16];
        std::snprintf(property, sizeof property, "0x%08X", static_cast<unsigned>(properties[0]));
        const bool settable = signal.compare(0, prefix, "QVN_SET_") == 0;
        rows[(settable ? "set " : "received ") + message + " | `" + signal.substr(prefix) + "` "] =
            std::string("`") + property + "` | " + rules.at(signal) + " |";
    }

    std::ifstream document(QVN_PROPERTY_LIST);
    std::string direction = "received ";
    std::string message;
    for (std::string line; std::getline(document, line);) {
        if (line == "## What can be set, by message") {
            direction = "set ";
        } else if (line.compare(0, 4, "### ") == 0) {
            message = line.substr(4);
        } else if (line.compare(0, 3, "| `") == 0) {
            const std::size_t second = line.find('|', 1);
            const std::string key = direction + message + " " + line.substr(0, second);
            EXPECT_EQ(line.substr(second + 2), rows[key]) << key;
            rows.erase(key);
        }
    }
    for (const auto& row : rows) {
        ADD_FAILURE() << "not in the list: " << row.first;
    }
}

}  // namespace
