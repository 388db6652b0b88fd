#include "e2e/RawSocket.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <stdexcept>

#include "e2e/Process.h"

namespace qvn::e2e {
namespace {

int newSocket() {
    return socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
}

sockaddr_un addressOf(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof(address.sun_path) - 1);
    return address;
}

void check(bool good, const char* what) {
    if (!good) {
        throw std::runtime_error(std::string(what) + ": " + std::strerror(errno));
    }
}

}  // namespace

std::string serviceSocket(const std::string& directory) {
    return directory + "/fdbus_can_service.sock";
}

std::string frame(int kind, unsigned code, const std::string& payload, int announced, int topic) {
    const auto size = static_cast<int>(payload.size());
    const struct {
        std::int32_t length;
        std::int16_t kind;
        std::int16_t topic;
        std::uint32_t code;
        std::uint32_t unused;
    } header = {announced < 0 ? size : announced, static_cast<std::int16_t>(kind), static_cast<std::int16_t>(topic),
                code, 0};
    return std::string(reinterpret_cast<const char*>(&header), sizeof header) + payload;
}

RawSocket::RawSocket(int fd) : mFd(fd) {
    const timeval limit{kDeadlineSeconds, 0};
    setsockopt(mFd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    setsockopt(mFd, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
}

RawSocket::RawSocket(const std::string& path) : RawSocket(newSocket()) {
    const sockaddr_un address = addressOf(path);
    check(connect(mFd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0, "connect");
}

RawSocket::~RawSocket() {
    if (mFd >= 0) {
        close(mFd);
    }
}

bool RawSocket::write(const std::string& bytes) const {
    for (std::size_t sent = 0; sent < bytes.size();) {
        const ssize_t count = send(mFd, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count < 0) {
            return false;
        }
        sent += static_cast<std::size_t>(count);
    }
    return true;
}

std::string RawSocket::read() const {
    char buffer[65536];
    const ssize_t count = recv(mFd, buffer, sizeof buffer, 0);
    return count > 0 ? std::string(buffer, static_cast<std::size_t>(count)) : "";
}

bool RawSocket::ends() const {
    while (!read().empty()) {
    }
    char byte = 0;
    return recv(mFd, &byte, 1, MSG_DONTWAIT) == 0 || errno == ECONNRESET;
}

HostileService::HostileService(const std::string& directory) : mListener(newSocket()) {
    // Listens before it is seen.
    const std::string hidden = directory + "/hidden";
    const sockaddr_un address = addressOf(hidden);
    check(bind(mListener.fd(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0, "bind");
    check(listen(mListener.fd(), 8) == 0, "listen");
    check(std::rename(hidden.c_str(), serviceSocket(directory).c_str()) == 0, "rename");
}

RawSocket HostileService::accept() const {
    const int fd = accept4(mListener.fd(), nullptr, nullptr, SOCK_CLOEXEC);
    check(fd >= 0, "accept");
    return RawSocket(fd);
}

}  // namespace qvn::e2e
