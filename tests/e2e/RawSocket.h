#pragma once

#include <string>
#include <utility>

namespace qvn::e2e {

/// The runtime directory's socket of the CAN service.
std::string serviceSocket(const std::string& directory);

/// The bus's frame: header, then the payload. `announced` of -1 is the payload's own size.
std::string frame(int kind, unsigned code, const std::string& payload, int announced = -1, int topic = 0);

constexpr int kSubscribe = 1;
constexpr int kReply = 5;
constexpr int kBroadcast = 7;

/// One end of a stream to the other side of the bus, as a program without the bus library has it.
class RawSocket {
public:
    /// Takes a socket over. No call waits longer than kDeadlineSeconds.
    explicit RawSocket(int fd);
    /// Connects to a service.
    explicit RawSocket(const std::string& path);
    RawSocket(RawSocket&& other) noexcept : mFd(std::exchange(other.mFd, -1)) {}
    RawSocket& operator=(RawSocket&& other) noexcept {
        std::swap(mFd, other.mFd);
        return *this;
    }
    ~RawSocket();

    int fd() const { return mFd; }
    /// False when the other side has ended the stream, or takes nothing.
    bool write(const std::string& bytes) const;
    /// Waits for the first bytes; empty when the stream has ended, or nothing came for a long time.
    std::string read() const;
    /// Reads until the other side ends the stream; false when it does not.
    bool ends() const;

private:
    int mFd;
};

/// The CAN service's socket in hostile hands.
class HostileService {
public:
    explicit HostileService(const std::string& directory);

    /// Waits for a client.
    RawSocket accept() const;

private:
    RawSocket mListener;
};

}  // namespace qvn::e2e
