#ifndef CALLBACK_FORK_GUARD_H
#define CALLBACK_FORK_GUARD_H

namespace qvn {
namespace callback {

/// While a callback of the application runs, and what of the library comes after it. A child that the application forks
/// in there must not return from it: it would go on in the bus, on its parent's connection, or wait for a lock that a
/// thread holds which it does not have. Such a child is ended, with a line on standard error and status EXIT_FAILURE.
class ForkGuard {
public:
    ForkGuard();
    ~ForkGuard();
    ForkGuard(const ForkGuard&) = delete;
    ForkGuard& operator=(const ForkGuard&) = delete;

private:
    const unsigned mForks;
};

}  // namespace callback
}  // namespace qvn

#endif  // CALLBACK_FORK_GUARD_H
