#pragma once

#include <httplib.h>

#include <chrono>

namespace qvn::tools {

/// One connection to a browser, for one request. Other than the library's own stream it has a limit for the whole
/// request, in time and in bytes: who sends a byte now and then, or never ends a line, holds neither a thread nor
/// memory.
class Connection final : public httplib::Stream {
public:
    /// Does not own the socket.
    explicit Connection(socket_t socket) : mSocket(socket) {}

    bool is_readable() const override;
    bool is_writable() const override;
    ssize_t read(char* ptr, size_t size) override;
    ssize_t write(const char* ptr, size_t size) override;

    /// Ends the response, and takes what the other side still sends until it has closed, too: a connection that is
    /// closed on something unread is reset, and the response with it.
    void finish();

    socket_t socket() const override { return mSocket; }

    // Nobody asks for them.
    void get_remote_ip_and_port(std::string&, int&) const override {}
    void get_local_ip_and_port(std::string&, int&) const override {}

private:
    using Clock = std::chrono::steady_clock;

    const socket_t mSocket;
    const Clock::time_point mStart = Clock::now();
    std::size_t mReceived = 0;
};

}  // namespace qvn::tools
