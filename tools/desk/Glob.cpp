#include "desk/Glob.h"

#include <fnmatch.h>

#include <string>

#include "desk/Text.h"

namespace qvn::tools {

bool matchesGlob(std::string_view pattern, std::string_view name) {
    return fnmatch(lowerCase(pattern).c_str(), lowerCase(name).c_str(), 0) == 0;
}

}  // namespace qvn::tools
