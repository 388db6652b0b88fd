#pragma once

#include <string_view>

namespace qvn::tools {

/// Whether a name matches a pattern in which * stands for any characters and ? for one; in any case of letters.
bool matchesGlob(std::string_view pattern, std::string_view name);

}  // namespace qvn::tools
