#pragma once

#include "desk/FileDescriptor.h"

namespace qvn::tools {

/// Wakes a thread that waits for file descriptors. notify() may be called from any thread.
class WakeUp {
public:
    WakeUp();

    /// Readable from notify() to clear().
    int fd() const { return mFd.get(); }
    void notify();
    void clear();

private:
    FileDescriptor mFd;
};

}  // namespace qvn::tools
