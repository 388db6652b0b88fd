#include "common/StopSignals.h"

#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <system_error>

namespace qvn::tools {
namespace {

int checked(int fd, const char* what) {
    if (fd < 0) {
        throw std::system_error(errno, std::generic_category(), what);
    }
    return fd;
}

int blockStopSignals() {
    std::signal(SIGPIPE, SIG_IGN);
    sigset_t stop;
    sigemptyset(&stop);
    sigaddset(&stop, SIGINT);
    sigaddset(&stop, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stop, nullptr);
    return checked(signalfd(-1, &stop, SFD_CLOEXEC | SFD_NONBLOCK), "signalfd");
}

}  // namespace

StopSignals::StopSignals() : fd_(blockStopSignals()) {}

StopSignals::~StopSignals() {
    close(fd_);
}

WakeUp::WakeUp() : fd_(checked(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK), "eventfd")) {}

WakeUp::~WakeUp() {
    close(fd_);
}

void WakeUp::notify() {
    eventfd_write(fd_, 1);
}

void WakeUp::clear() {
    eventfd_t count = 0;
    eventfd_read(fd_, &count);
}

}  // namespace qvn::tools
