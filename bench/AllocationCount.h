#pragma once

#include <cstddef>

namespace bench {

/// How often this program has called operator new.
std::size_t allocationCount();

}  // namespace bench
