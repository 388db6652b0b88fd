#pragma once

#include <fstream>
#include <functional>
#include <istream>
#include <string>
#include <string_view>

namespace qvn::tools {

/// @throws BadInput when it cannot be opened
std::ifstream openFile(const std::string& name);

/// Calls `onLine` for each line of a file, and adds the place to what it finds wrong.
/// @throws BadInput "NAME:LINE: ..." for the first line for which `onLine` throws one, or when the file cannot be read
void readLines(std::istream& input, const std::string& name, const std::function<void(const std::string&)>& onLine);

/// The bytes of pairs of hexadecimal digits.
/// @throws BadInput for anything else, and for more bytes than a frame has
std::string readHexBytes(std::string_view text);

}  // namespace qvn::tools
