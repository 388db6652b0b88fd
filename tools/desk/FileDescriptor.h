#pragma once

#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace qvn::tools {

/// Owns a file descriptor.
class FileDescriptor {
public:
    /// @throws std::system_error when `fd` is negative, with errno as `what` left it
    FileDescriptor(int fd, const char* what) : fd_(fd) {
        if (fd_ < 0) {
            throw std::system_error(errno, std::generic_category(), what);
        }
    }
    ~FileDescriptor() { close(fd_); }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    int get() const { return fd_; }

private:
    int fd_;
};

}  // namespace qvn::tools
