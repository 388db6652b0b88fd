#include "desk/StopSignals.h"

#include <sys/signalfd.h>

#include <csignal>

namespace qvn::tools {
namespace {

int blockStopSignals() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    sigset_t stop;
    sigemptyset(&stop);
    sigaddset(&stop, SIGINT);
    sigaddset(&stop, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stop, nullptr);
    return signalfd(-1, &stop, SFD_CLOEXEC | SFD_NONBLOCK);
}

}  // namespace

StopSignals::StopSignals() : mFd(blockStopSignals(), "signalfd") {}

}  // namespace qvn::tools
