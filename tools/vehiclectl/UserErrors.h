#pragma once

#include <string>

namespace qvn::tools {

/// An error line on standard error.
void printError(const std::string& text);

/// Whether a service can be reached here at all; tells the user why not.
bool prepareService();

}  // namespace qvn::tools
