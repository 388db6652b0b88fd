#pragma once

#include <functional>
#include <string>

namespace qvn::tools {

/// Takes the lines that arrive on a file descriptor, without ever waiting for one.
class LineReader {
public:
    explicit LineReader(int fd) : mFd(fd) {}

    /// Reads what is there and calls `onLine` for every line that is complete, or was cut off by the end.
    /// @return false once the input has ended
    bool read(const std::function<void(const std::string&)>& onLine);

    /// Number of the line that was given out last; 0 before the first one.
    int lineNumber() const { return mLineNumber; }

private:
    int mFd;
    std::string mPending;
    int mLineNumber = 0;
};

}  // namespace qvn::tools
