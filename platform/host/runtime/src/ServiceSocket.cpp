#include "host/ServiceSocket.h"

#include <sys/socket.h>

#include <cstring>

#include "host/RuntimeDir.h"

namespace qvn::host {
namespace {

std::string pathOf(const std::string& service) {
    return runtimeDir() + "/" + service + ".sock";
}

}  // namespace

bool serviceSocketPath(const std::string& service, std::string* path, std::string* error) {
    const std::string found = pathOf(service);
    sockaddr_un address;
    if (socketAddress(found, &address)) {
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

std::error_code socketAddress(const std::string& path, sockaddr_un* address) {
    *address = sockaddr_un();
    address->sun_family = AF_UNIX;
    if (path.size() >= sizeof address->sun_path) {
        return std::make_error_code(std::errc::filename_too_long);
    }
    std::memcpy(address->sun_path, path.c_str(), path.size() + 1);
    return {};
}

UniqueFd connectToService(const std::string& service, std::error_code& error) {
    sockaddr_un address;
    error = socketAddress(pathOf(service), &address);
    if (error) {
        return UniqueFd();
    }
    UniqueFd fd(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!fd || ::connect(fd.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        error = lastError();
        return UniqueFd();
    }
    return fd;
}

int serviceHolder(const std::string& service) {
    std::error_code error;
    const UniqueFd fd = connectToService(service, error);
    ucred holder = {};
    socklen_t size = sizeof holder;
    return fd && ::getsockopt(fd.get(), SOL_SOCKET, SO_PEERCRED, &holder, &size) == 0 ? holder.pid : 0;
}

}  // namespace qvn::host
