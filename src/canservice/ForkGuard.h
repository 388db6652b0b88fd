#ifndef CANSERVICE_FORK_GUARD_H
#define CANSERVICE_FORK_GUARD_H

/// For a function that a thread of the bus or of the GPIO library calls, for its whole length. A child that the
/// application forks inside a callback must not return from it: it would go on in the bus, on its parent's connection.
/// Such a child is ended, with a line on standard error and status EXIT_FAILURE.
class ForkGuard {
public:
    ForkGuard();
    ~ForkGuard();
    ForkGuard(const ForkGuard&) = delete;
    ForkGuard& operator=(const ForkGuard&) = delete;

private:
    const unsigned mForks;
};

#endif  // CANSERVICE_FORK_GUARD_H
