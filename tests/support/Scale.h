#pragma once

#include <cstdlib>

namespace qvn::test {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

/// How often a test repeats something: a fifth as often under a sanitizer, ten times as often with QVN_TEST_LONG=1.
inline int scaled(int count) {
    const bool longRun = std::getenv("QVN_TEST_LONG") != nullptr;
    return longRun ? count * 10 : kSanitized ? count / 5 : count;
}

}  // namespace qvn::test
