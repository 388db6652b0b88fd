#include "Connection.h"

#include "Writer.h"

#include <host/Log.h>

#include <fcntl.h>

#include <cstring>
#include <new>

namespace fdb {
namespace {

constexpr size_t kReadBytes = size_t{64} * 1024;

}  // namespace

std::shared_ptr<Connection> Connection::open(qvn::host::EventLoop& loop, qvn::host::UniqueFd socket,
                                             const std::string& label, std::error_code& error) {
    error = Writer::instance().ready();
    if (error) {
        return nullptr;
    }
    qvn::host::UniqueFd output(::fcntl(socket.get(), F_DUPFD_CLOEXEC, 0));
    if (!output) {
        error = qvn::host::lastError();
        return nullptr;
    }
    qvn::host::LoopDescriptor input;
    error = input.open(loop, std::move(socket));
    return error ? nullptr : std::make_shared<Connection>(std::move(input), std::move(output), label);
}

Connection::Connection(qvn::host::LoopDescriptor input, qvn::host::UniqueFd output, const std::string& label)
    : mInput(std::move(input)),
      mLabel(label),
      mReadBuffer(kReadBytes),
      mOutput(std::make_shared<Output>(std::move(output), label)) {}

void Connection::start(std::weak_ptr<ConnectionHandler> handler) {
    mHandler = std::move(handler);
    read();
}

void Connection::read() {
    mInput.read(mReadBuffer.data() + mReadEnd, mReadBuffer.size() - mReadEnd,
                [self = shared_from_this()](size_t bytes) { self->onRead(bytes); });
}

void Connection::onRead(size_t bytes) {
    const std::shared_ptr<ConnectionHandler> handler = mHandler.lock();
    if (!handler) {
        return;
    }
    if (bytes == 0) {
        end(nullptr);
        return;
    }
    mReadEnd += bytes;
    try {
        if (dispatch(*handler)) {
            moveToFront();
            read();
        }
    } catch (const std::bad_alloc&) {
        end("met a lack of memory");
    }
}

/// Makes room for the whole of an incomplete frame.
void Connection::moveToFront() {
    if (mReadBegin != 0) {
        std::memmove(mReadBuffer.data(), mReadBuffer.data() + mReadBegin, mReadEnd - mReadBegin);
        mReadEnd -= mReadBegin;
        mReadBegin = 0;
    }
}

/// Walks the complete frames of the read buffer. False when the connection has ended.
bool Connection::dispatch(ConnectionHandler& handler) {
    for (;;) {
        FrameView frame;
        size_t used = 0;
        const uint8_t* begin = mReadBuffer.data() + mReadBegin;
        switch (readFrame(begin, mReadEnd - mReadBegin, frame, used)) {
            case FrameResult::Malformed:
                end("sent a malformed frame");
                return false;
            case FrameResult::Incomplete:
                if (used > mReadBuffer.size()) {
                    mReadBuffer.resize(used);
                } else if (mReadEnd == mReadBegin && mReadBuffer.size() > kReadBytes) {
                    mReadBuffer = std::vector<uint8_t>(kReadBytes);  // the memory of a large frame is not kept
                    mReadBegin = mReadEnd = 0;
                }
                return true;
            case FrameResult::Complete:
                mReadBegin += used;
                if (!handler.onFrame(frame)) {
                    end("sent a malformed frame");
                    return false;
                }
                if (mHandler.expired()) {
                    return false;
                }
                break;
        }
    }
}

void Connection::end(const char* reason) {
    if (reason) {
        lgklog_print(qvn::host::kLogError, "fdbus: %s %s, the session ends", mLabel.c_str(), reason);
    }
    const std::shared_ptr<ConnectionHandler> handler = mHandler.lock();
    close();
    if (handler) {
        handler->onClosed();
    }
}

void Connection::close() {
    mHandler.reset();
    mOutput->close();
}

}  // namespace fdb
