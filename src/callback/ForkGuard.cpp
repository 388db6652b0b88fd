#include "callback/ForkGuard.h"

#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>

namespace qvn {
namespace callback {

namespace {

/// How often this process has become a child since it came to be; cheaper to ask for than its identifier.
unsigned forks() {
    static std::atomic<unsigned> count{0};
    static const int registered = ::pthread_atfork(nullptr, nullptr, [] { ++count; });
    static_cast<void>(registered);
    return count;
}

/// Without the log and the buffers of standard output: their locks may be those of threads that the child does not
/// have.
[[noreturn]] void endChild() {
    static const char kReason[] =
        "vehicle client: a child process that was forked inside a callback returned from it, and is ended; "
        "call exec or _exit in it\n";
    if (::write(STDERR_FILENO, kReason, sizeof(kReason) - 1) < 0) {
        std::abort();  // it cannot be told in words
    }
    std::_Exit(EXIT_FAILURE);
}

}  // namespace

ForkGuard::ForkGuard() : mForks(forks()) {}

ForkGuard::~ForkGuard() {
    if (forks() != mForks) {
        endChild();
    }
}

}  // namespace callback
}  // namespace qvn
