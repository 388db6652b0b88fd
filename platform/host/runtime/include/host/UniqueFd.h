#pragma once

#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace qvn::host {

/// A file descriptor with an owner.
class UniqueFd {
public:
    UniqueFd() = default;
    explicit UniqueFd(int fd) : mFd(fd) {}
    UniqueFd(UniqueFd&& other) noexcept : mFd(other.release()) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept {
        const UniqueFd old(std::exchange(mFd, other.release()));
        return *this;
    }
    ~UniqueFd() {
        if (mFd >= 0) {
            ::close(mFd);
        }
    }

    int get() const { return mFd; }
    explicit operator bool() const { return mFd >= 0; }
    int release() { return std::exchange(mFd, -1); }

private:
    int mFd = -1;
};

/// Why the system call before has failed.
inline std::error_code lastError() {
    return {errno, std::generic_category()};
}

}  // namespace qvn::host
