#pragma once

#include <asio/buffer.hpp>
#include <asio/posix/stream_descriptor.hpp>

#include <cstddef>
#include <memory>
#include <system_error>
#include <utility>

#include "host/EventLoop.h"
#include "host/UniqueFd.h"

namespace qvn::host {

/// A descriptor that a loop waits on. One thread at a time: the loop's, or one that keeps the loop from running.
class LoopDescriptor {
public:
    /// Takes an open descriptor over, in place of the one before.
    std::error_code open(EventLoop& loop, UniqueFd fd);
    void close() { mDescriptor.reset(); }

    explicit operator bool() const { return mDescriptor != nullptr; }
    int get() const { return mDescriptor->native_handle(); }

    /// Calls `action` once, when there is something to read; never after close().
    template <typename Action>
    void awaitReadable(Action action) {
        mDescriptor->async_wait(
            asio::posix::stream_descriptor::wait_read,
            [waiting = std::weak_ptr<void>(mDescriptor), action = std::move(action)](const std::error_code& error) {
                if (!error && !waiting.expired()) {
                    action();
                }
            });
    }

    /// Reads once, as soon as there is something, and calls `action` with the number of bytes; 0 is the end of the
    /// stream, or an error. Not after close().
    template <typename Action>
    void read(void* data, std::size_t size, Action action) {
        mDescriptor->async_read_some(asio::buffer(data, size),
                                     [waiting = std::weak_ptr<void>(mDescriptor), action = std::move(action)](
                                         const std::error_code& error, std::size_t bytes) {
                                         if (!waiting.expired()) {
                                             action(error ? 0 : bytes);
                                         }
                                     });
    }

private:
    std::shared_ptr<asio::posix::stream_descriptor> mDescriptor;
};

}  // namespace qvn::host
