#pragma once

#include <cstddef>
#include <string>

#include "desk/FileDescriptor.h"

namespace qvn::tools {

/// A file that a recording is written to, in whole lines. A file that it replaces is there, as it was, until the first
/// lines have been written.
class TraceFile {
public:
    /// Makes the file, with these first lines. A device, such as /dev/null, takes the place of a file.
    /// @throws BadInput when there is such a file and it is not to be replaced, or when it cannot be made
    /// @throws std::runtime_error when it cannot take its first lines; nothing is left of it then
    TraceFile(const std::string& path, bool replace, const std::string& firstLines);

    /// Appends whole lines.
    /// @throws std::runtime_error when the file takes no more; it ends with a whole line then
    void append(const std::string& lines);

    std::size_t bytes() const { return mBytes; }

private:
    const std::string mPath;
    std::string mMade;  // the file that this has made, until it takes the path; empty for a device
    const FileDescriptor mFile;
    std::size_t mBytes = 0;
};

}  // namespace qvn::tools
