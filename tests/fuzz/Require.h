#pragma once

#include <cstdlib>

namespace qvn::fuzz {

/// What must hold for every input.
inline void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

}  // namespace qvn::fuzz
