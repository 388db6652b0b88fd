#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace qvn::test {

using Words = std::vector<std::string>;

/// The lines of data/expected_tables.txt that begin with this word, in order, each without it.
const std::vector<Words>& expected(const std::string& kind);

/// A decimal or 0x-hexadecimal number of that file.
std::uint32_t number(const std::string& text);

/// The identifier of a name, as the file has it.
std::uint32_t codeOf(const std::string& name);

/// The properties that a signal feeds, or is fed by, in table order.
std::vector<int> propertiesOf(const std::string& name);

}  // namespace qvn::test
