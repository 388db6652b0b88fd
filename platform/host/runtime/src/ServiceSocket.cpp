#include "host/ServiceSocket.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "host/RuntimeDir.h"

namespace qvn {
namespace host {
namespace {

std::string pathOf(const std::string& service) {
    return runtimeDir() + "/" + serviceSocketName(service);
}

void closeKeepingErrno(int fd) {
    const int reason = errno;
    ::close(fd);
    errno = reason;
}

}  // namespace

std::string serviceSocketName(const std::string& service) {
    return service + ".sock";
}

bool serviceSocketPath(const std::string& service, std::string* path, std::string* error) {
    const std::string found = pathOf(service);
    sockaddr_un address;
    if (!socketAddress(found, &address)) {
        if (error != nullptr) {
            *error = "the path " + found + " is longer than the " + std::to_string(sizeof address.sun_path - 1) +
                     " bytes that a socket's may have; set QVN_HOST_DIR to a folder with a shorter path";
        }
        return false;
    }
    if (path != nullptr) {
        *path = found;
    }
    return true;
}

bool socketAddress(const std::string& path, sockaddr_un* address) {
    *address = sockaddr_un();
    address->sun_family = AF_UNIX;
    if (path.size() >= sizeof address->sun_path) {
        errno = ENAMETOOLONG;
        return false;
    }
    std::memcpy(address->sun_path, path.c_str(), path.size() + 1);
    return true;
}

int connectToService(const std::string& service) {
    sockaddr_un address;
    if (!socketAddress(pathOf(service), &address)) {
        return -1;
    }
    const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (fd >= 0 && ::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        closeKeepingErrno(fd);
        return -1;
    }
    return fd;
}

int serviceHolder(const std::string& service) {
    const int fd = connectToService(service);
    if (fd < 0) {
        return 0;
    }
    ucred holder = {};
    socklen_t size = sizeof holder;
    const bool known = ::getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &holder, &size) == 0;
    closeKeepingErrno(fd);
    return known ? holder.pid : 0;
}

}  // namespace host
}  // namespace qvn
