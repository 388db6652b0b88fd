#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <system_error>

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
    int get() const;

    /// Calls `action` once, when there is something to read; never after close().
    void awaitReadable(std::function<void()> action);

    /// Reads once, as soon as there is something, and calls `action` with the number of bytes; 0 is the end of the
    /// stream, or an error. Not after close().
    void read(void* data, std::size_t size, std::function<void(std::size_t)> action);

private:
    struct Descriptor;

    std::shared_ptr<Descriptor> mDescriptor;
};

}  // namespace qvn::host
