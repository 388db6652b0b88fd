#include "support/ExpectedTables.h"

#include <fstream>
#include <map>
#include <sstream>

namespace qvn::test {

const std::vector<Words>& expected(const std::string& kind) {
    static const std::map<std::string, std::vector<Words>> all = [] {
        std::map<std::string, std::vector<Words>> lines;
        std::ifstream file(QVN_EXPECTED_TABLES);
        for (std::string line; std::getline(file, line);) {
            std::istringstream stream(line);
            std::string first;
            if (stream >> first && first[0] != '#') {
                Words words;
                for (std::string word; stream >> word;) {
                    words.push_back(word);
                }
                lines[first].push_back(words);
            }
        }
        return lines;
    }();
    return all.at(kind);
}

std::uint32_t number(const std::string& text) {
    return static_cast<std::uint32_t>(std::stoul(text, nullptr, 0));
}

std::uint32_t codeOf(const std::string& name) {
    static const std::map<std::string, std::uint32_t> codes = [] {
        std::map<std::string, std::uint32_t> all;
        for (const Words& line : expected("code")) {
            all[line[0]] = number(line[1]);
        }
        return all;
    }();
    return codes.at(name);
}

std::vector<int> propertiesOf(const std::string& name) {
    std::vector<int> properties;
    for (const Words& row : expected("row")) {
        if (row[0] == name) {
            properties.push_back(static_cast<int>(number(row[2])));
        }
    }
    return properties;
}

}  // namespace qvn::test
