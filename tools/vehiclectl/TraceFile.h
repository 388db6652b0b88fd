#pragma once

#include <cstddef>
#include <string>

#include "desk/FileDescriptor.h"

namespace qvn::tools {

/// A file that a recording is written to. It holds whole lines at any moment, however the process ends. A file that it
/// replaces is there, as it was, until the first lines have been written.
class TraceFile {
public:
    /// Makes the file, with these first lines.
    /// @throws BadInput when there is such a file and it is not to be replaced, or when it cannot be made
    TraceFile(const std::string& path, bool replace, const std::string& firstLines);

    /// Appends whole lines.
    /// @throws std::runtime_error when the file takes no more; what it took in part is removed again
    void append(const std::string& lines);

    std::size_t bytes() const { return bytes_; }

private:
    void write(const std::string& lines);

    const std::string path_;
    const std::string madeAs_;  // beside the file that it replaces
    const FileDescriptor file_;
    std::size_t bytes_ = 0;
};

}  // namespace qvn::tools
