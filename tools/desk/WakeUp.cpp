#include "desk/WakeUp.h"

#include <sys/eventfd.h>

namespace qvn::tools {

WakeUp::WakeUp() : mFd(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK), "eventfd") {}

void WakeUp::notify() {
    eventfd_write(mFd.get(), 1);
}

void WakeUp::clear() {
    eventfd_t count = 0;
    eventfd_read(mFd.get(), &count);
}

}  // namespace qvn::tools
