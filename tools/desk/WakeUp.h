#pragma once

#include "desk/FileDescriptor.h"

namespace qvn::tools {

/// Wakes a thread that waits for file descriptors. notify() may be called from any thread.
class WakeUp {
public:
    WakeUp();

    /// Readable from notify() to clear().
    int fd() const { return fd_.get(); }
    void notify();
    void clear();

private:
    FileDescriptor fd_;
};

}  // namespace qvn::tools
