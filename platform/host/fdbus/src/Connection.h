#pragma once

#include "Frame.h"
#include "Output.h"

#include <host/LoopDescriptor.h>

#include <memory>
#include <string>
#include <string_view>
#include <system_error>
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
    /// Takes over a connected socket; `label` names the other side in log lines. Null, with `error` set, when the
    /// system is short of something.
    static std::shared_ptr<Connection> open(qvn::host::EventLoop& loop, qvn::host::UniqueFd socket,
                                            const std::string& label, std::error_code& error);

    /// Of open().
    Connection(qvn::host::LoopDescriptor input, qvn::host::UniqueFd output, const std::string& label);

    /// Starts to read. Call it on the loop.
    void start(std::weak_ptr<ConnectionHandler> handler);
    /// False when the connection has ended.
    bool send(std::string_view frame) { return mOutput->send(frame); }
    /// Ends the connection; the handler is not told. What the kernel does not take at once is dropped. Call it on the
    /// loop, or between two handlers of it.
    void close();

private:
    void read();
    void onRead(size_t bytes);
    bool dispatch(ConnectionHandler& handler);
    void moveToFront();
    void end(const char* reason);

    qvn::host::LoopDescriptor mInput;
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
