#pragma once

#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace qvn::tools {

/// Owns a file descriptor.
class FileDescriptor {
public:
    /// @throws std::system_error when `fd` is negative, with errno as `what` left it
    FileDescriptor(int fd, const char* what) : mFd(fd) {
        if (mFd < 0) {
            throw std::system_error(errno, std::generic_category(), what);
        }
    }
    ~FileDescriptor() { close(mFd); }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    int get() const { return mFd; }

private:
    int mFd;
};

}  // namespace qvn::tools
