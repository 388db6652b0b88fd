#include "e2e/RawSocket.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <utility>

#include "e2e/Process.h"

namespace qvn::e2e {
namespace {

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

bool readable(int fd) {
    pollfd descriptor{fd, POLLIN, 0};
    return poll(&descriptor, 1, kDeadlineSeconds * 1000) > 0;
}

}  // namespace

std::string serviceSocket(const std::string& directory) {
    return directory + "/fdbus_can_service.sock";
}

std::string frame(int kind, unsigned code, const std::string& payload, int announced, int topic) {
    const auto length =
        announced < 0 ? static_cast<std::uint32_t>(payload.size()) : static_cast<std::uint32_t>(announced);
    const auto kindBits = static_cast<std::uint16_t>(kind);
    const auto topicLength = static_cast<std::uint16_t>(topic);
    std::string bytes(16, '\0');
    std::memcpy(&bytes[0], &length, 4);
    std::memcpy(&bytes[4], &kindBits, 2);
    std::memcpy(&bytes[6], &topicLength, 2);
    std::memcpy(&bytes[8], &code, 4);
    return bytes + payload;
}

RawSocket::RawSocket(const std::string& path) : fd_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    const sockaddr_un address = addressOf(path);
    check(connect(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0, "connect");
}

RawSocket::RawSocket(RawSocket&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}

RawSocket& RawSocket::operator=(RawSocket&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
}

RawSocket::~RawSocket() {
    if (fd_ >= 0) {
        close(fd_);
    }
}

bool RawSocket::write(const std::string& bytes) const {
    for (std::size_t sent = 0; sent < bytes.size();) {
        const ssize_t count = send(fd_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count < 0) {
            return false;
        }
        sent += static_cast<std::size_t>(count);
    }
    return true;
}

std::string RawSocket::read() const {
    char buffer[65536];
    const ssize_t count = readable(fd_) ? recv(fd_, buffer, sizeof buffer, 0) : -1;
    return count > 0 ? std::string(buffer, static_cast<std::size_t>(count)) : "";
}

bool RawSocket::ends() const {
    while (!read().empty()) {
    }
    char byte = 0;
    return recv(fd_, &byte, 1, MSG_DONTWAIT) == 0 || errno == ECONNRESET;
}

HostileService::HostileService(const std::string& directory) : fd_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    // Listens before it is seen.
    const std::string hidden = directory + "/hidden";
    const sockaddr_un address = addressOf(hidden);
    check(bind(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0, "bind");
    check(listen(fd_, 8) == 0, "listen");
    check(std::rename(hidden.c_str(), serviceSocket(directory).c_str()) == 0, "rename");
}

HostileService::~HostileService() {
    close(fd_);
}

RawSocket HostileService::accept() const {
    const int fd = readable(fd_) ? accept4(fd_, nullptr, nullptr, SOCK_CLOEXEC) : -1;
    check(fd >= 0, "accept");
    return RawSocket(fd);
}

}  // namespace qvn::e2e
