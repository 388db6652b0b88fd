#include "can-service-sim/panel/Connection.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>

#include "desk/PollUntil.h"

namespace qvn::tools {
namespace {

constexpr std::chrono::seconds kTimeToRead{4};   // the whole request
constexpr std::chrono::seconds kTimeToWrite{5};  // until the other side takes something
constexpr std::size_t kLongestRequest = 16'384;

bool waitFor(socket_t socket, short events, std::chrono::steady_clock::time_point end) {
    pollfd descriptor{socket, events, 0};
    return pollUntil(&descriptor, 1, end) > 0;
}

}  // namespace

bool Connection::is_readable() const {
    return waitFor(mSocket, POLLIN, mStart + kTimeToRead);
}

bool Connection::is_writable() const {
    return waitFor(mSocket, POLLOUT, Clock::now() + kTimeToWrite);
}

ssize_t Connection::read(char* ptr, size_t size) {
    const std::size_t most = std::min(size, kLongestRequest - mReceived);
    if (most == 0 || !is_readable()) {
        return -1;
    }
    const ssize_t count = recv(mSocket, ptr, most, MSG_DONTWAIT);
    mReceived += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    return count;
}

ssize_t Connection::write(const char* ptr, size_t size) {
    return is_writable() ? send(mSocket, ptr, size, MSG_DONTWAIT | MSG_NOSIGNAL) : -1;
}

void Connection::finish() {
    char rest[1024];
    shutdown(mSocket, SHUT_WR);
    while (read(rest, sizeof rest) > 0) {
    }
}

}  // namespace qvn::tools
