#include "host/LoopDescriptor.h"

namespace qvn::host {

std::error_code LoopDescriptor::open(EventLoop& loop, UniqueFd fd) {
    auto descriptor = std::make_shared<asio::posix::stream_descriptor>(loop.context());
    std::error_code error;
    descriptor->assign(fd.get(), error);
    if (!error) {
        fd.release();
        mDescriptor = std::move(descriptor);
    }
    return error;
}

}  // namespace qvn::host
