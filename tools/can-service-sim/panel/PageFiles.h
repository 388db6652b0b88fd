#pragma once

#include <string_view>
#include <vector>

namespace qvn::tools {

/// A file of the panel's page, as it was when this program was built.
struct PageFile {
    const char* path;
    const char* type;
    std::string_view content;
};

const std::vector<PageFile>& pageFiles();

}  // namespace qvn::tools
