#pragma once

#include <string>

namespace qvn::host {

/// The folder that holds a path without trailing slashes; the root and "." are their own parents.
inline std::string parentOf(const std::string& path) {
    const std::size_t slash = path.find_last_of('/');
    if (slash == std::string::npos) {
        return ".";
    }
    return slash == 0 ? "/" : path.substr(0, path.find_last_not_of('/', slash) + 1);
}

}  // namespace qvn::host
