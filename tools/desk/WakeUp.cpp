#include "desk/WakeUp.h"

#include <sys/eventfd.h>

namespace qvn::tools {

WakeUp::WakeUp() : fd_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK), "eventfd") {}

void WakeUp::notify() {
    eventfd_write(fd_.get(), 1);
}

void WakeUp::clear() {
    eventfd_t count = 0;
    eventfd_read(fd_.get(), &count);
}

}  // namespace qvn::tools
