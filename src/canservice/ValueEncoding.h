#ifndef CANSERVICE_VALUE_ENCODING_H
#define CANSERVICE_VALUE_ENCODING_H

#include <cstdint>

namespace qvn {
namespace canservice {

/// The quantity that a set request carries: value + offset. Integers are first cut to their low 16 bits, so that
/// negative ones go out in two's complement.
template <class Integer>
std::uint32_t quantity(Integer value, int offset) {
    return static_cast<std::uint32_t>(static_cast<std::uint16_t>(value) + offset);
}

/// Floats add the offset in single precision and are cut toward zero; what is negative or not a number gives 0, what
/// is too large the largest quantity.
std::uint32_t quantity(float value, int offset);

}  // namespace canservice
}  // namespace qvn

#endif  // CANSERVICE_VALUE_ENCODING_H
