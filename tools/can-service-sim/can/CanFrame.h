#pragma once

#include <cstdint>
#include <string>

namespace qvn::tools {

/// A data frame of a CAN bus.
struct CanFrame {
    std::uint32_t id = 0;
    bool extended = false;  ///< whether the id has 29 bits, else 11
    std::string payload;    ///< up to 8 bytes, of CAN FD up to 64
};

}  // namespace qvn::tools
