#pragma once

#include "EventLoop.h"
#include "Frame.h"
#include "Output.h"

#include <asio/posix/stream_descriptor.hpp>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace fdb {

/// Receives what happens on a connection, on the loop's thread.
class ConnectionHandler {
public:
    virtual ~ConnectionHandler() = default;
    /// False when the frame makes no sense; the connection then ends.
    virtual bool onFrame(const FrameView& frame) = 0;
    /// Once, when the connection has ended for another reason than close().
    virtual void onClosed() = 0;
};

/// One stream of frames between a client and a server. The loop's thread reads; any thread may send.
class Connection : public std::enable_shared_from_this<Connection> {
public:
    using Descriptor = std::unique_ptr<asio::posix::stream_descriptor>;

    /// Takes over a connected socket; `label` names the other side in log lines. Null, with errno set, when the system
    /// is short of something.
    static std::shared_ptr<Connection> open(EventLoop& loop, UniqueFd socket, const std::string& label);

    /// Of open().
    Connection(Descriptor input, UniqueFd output, const std::string& label);

    /// Starts to read. Call it on the loop.
    void start(std::weak_ptr<ConnectionHandler> handler);
    /// False when the connection has ended.
    bool send(std::string_view frame) { return mOutput->send(frame); }
    /// Ends the connection; the handler is not told. What the kernel does not take at once is dropped. Call it on the
    /// loop, or between two handlers of it.
    void close();

private:
    void read();
    void onRead(const std::error_code& error, size_t bytes);
    bool dispatch(ConnectionHandler& handler);
    void end(const char* reason);

    const Descriptor mInput;
    const std::string mLabel;
    std::weak_ptr<ConnectionHandler> mHandler;

    // The loop's thread only: received bytes that are not walked yet are [mReadBegin, mReadEnd).
    std::vector<uint8_t> mReadBuffer;
    size_t mReadBegin = 0;
    size_t mReadEnd = 0;

    // Has a descriptor of its own, since the Writer may use it when the loop, and this with it, is gone.
    const std::shared_ptr<Output> mOutput;
};

}  // namespace fdb
