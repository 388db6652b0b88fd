#include "desk/Glob.h"

#include <fnmatch.h>

#include <cctype>
#include <string>

namespace qvn::tools {
namespace {

std::string lowerCase(std::string_view text) {
    std::string result(text);
    for (char& c : result) {
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return result;
}

}  // namespace

bool matchesGlob(std::string_view pattern, std::string_view name) {
    return fnmatch(lowerCase(pattern).c_str(), lowerCase(name).c_str(), 0) == 0;
}

}  // namespace qvn::tools
