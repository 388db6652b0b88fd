#pragma once

#include <string>

namespace qvn::tools {

/// What differs between a host and a bench with the head unit's own platform libraries.

/// Checks that services can be offered and reached here at all. On failure `error` is one sentence for the user.
bool prepareDesk(std::string* error);

/// Moves the reverse line; 1 engaged (line low). On failure `error` is one sentence for the user.
bool writeReverseLine(bool engaged, std::string* error);

}  // namespace qvn::tools
