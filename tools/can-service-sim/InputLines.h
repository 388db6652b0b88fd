#pragma once

#include <functional>
#include <istream>
#include <string>

namespace qvn::tools {

/// Calls `onLine` for each line of a file, and adds the place to what it finds wrong.
/// @throws BadInput "NAME:LINE: ..." for the first line for which `onLine` throws one, or when the file cannot be read
void readLines(std::istream& input, const std::string& name, const std::function<void(const std::string&)>& onLine);

}  // namespace qvn::tools
