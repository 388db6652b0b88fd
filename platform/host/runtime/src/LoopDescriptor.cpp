#include "host/LoopDescriptor.h"

#include <asio/buffer.hpp>
#include <asio/posix/stream_descriptor.hpp>

#include <utility>

#include "LoopContext.h"

namespace qvn::host {

using asio::posix::stream_descriptor;

struct LoopDescriptor::Descriptor : stream_descriptor {
    using stream_descriptor::stream_descriptor;
};

std::error_code LoopDescriptor::open(EventLoop& loop, UniqueFd fd) {
    auto descriptor = std::make_shared<Descriptor>(loop.context().io);
    std::error_code error;
    descriptor->assign(fd.get(), error);
    if (!error) {
        fd.release();
        mDescriptor = std::move(descriptor);
    }
    return error;
}

int LoopDescriptor::get() const {
    return mDescriptor->native_handle();
}

void LoopDescriptor::awaitReadable(std::function<void()> action) {
    mDescriptor->async_wait(stream_descriptor::wait_read, [waiting = std::weak_ptr<void>(mDescriptor),
                                                           action = std::move(action)](const std::error_code& error) {
        if (!error && !waiting.expired()) {
            action();
        }
    });
}

void LoopDescriptor::read(void* data, std::size_t size, std::function<void(std::size_t)> action) {
    mDescriptor->async_read_some(asio::buffer(data, size),
                                 [waiting = std::weak_ptr<void>(mDescriptor), action = std::move(action)](
                                     const std::error_code& error, std::size_t bytes) {
                                     if (!waiting.expired()) {
                                         action(error ? 0 : bytes);
                                     }
                                 });
}

}  // namespace qvn::host
