#pragma once

#include "desk/FileDescriptor.h"

namespace qvn::tools {

/// SIGINT and SIGTERM as a file descriptor: the end of a tool is an event of its main loop. SIGPIPE and SIGXFSZ are
/// ignored: a pipe without a reader and a file at its limit are errors of the write that meets them.
/// Made before the first thread starts, since threads inherit the blocked signals.
class StopSignals {
public:
    StopSignals();

    /// Readable once a stop was asked for.
    int fd() const { return mFd.get(); }

private:
    FileDescriptor mFd;
};

}  // namespace qvn::tools
