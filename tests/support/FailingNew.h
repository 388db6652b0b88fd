#pragma once

// Replaces operator new by one that can be told to fail; for one source of a test program.

#include <cstdlib>
#include <new>

namespace {

/// Allocations of this thread that succeed before one fails; negative: none will fail.
thread_local int allocationsLeft = -1;
/// Of those that fail, the ones that follow the first.
[[maybe_unused]] thread_local int furtherFailures = 0;

}  // namespace

// Not inlined: where the compiler sees malloc or free instead of these it complains of a mismatch.
[[gnu::noinline]] void* operator new(std::size_t size) {
    const bool fails = allocationsLeft == 0;
    if (fails && furtherFailures > 0) {
        --furtherFailures;
    } else if (allocationsLeft >= 0) {
        --allocationsLeft;
    }
    void* const memory = fails ? nullptr : std::malloc(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
