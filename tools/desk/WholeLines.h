#pragma once

#include <string_view>

namespace qvn::tools {

/// Writes whole lines, and waits for a reader that is slow. What has been written ends with a line end even if the
/// reader stops and the process ends meanwhile, since a pipe takes up to PIPE_BUF bytes at once or not at all. A file
/// loses the part of a line that it took before it was full. Only of a line longer than PIPE_BUF may a pipe hold a
/// part.
/// @return 0, or the error number of what could not be written
int writeWholeLines(int fd, std::string_view lines);

}  // namespace qvn::tools
