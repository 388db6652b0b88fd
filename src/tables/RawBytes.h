#ifndef TABLES_RAW_BYTES_H
#define TABLES_RAW_BYTES_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace qvn {
namespace tables {

/// The unsigned big-endian number in the first bytes of a raw value; bytes that are missing count as 0.
inline std::uint32_t numberIn(const std::string& raw, std::uint32_t bytes) {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < bytes; ++i) {
        number = number << 8 | (i < raw.size() ? static_cast<unsigned char>(raw[i]) : 0U);
    }
    return number;
}

/// The low bits of a number as that many raw bytes, big-endian.
inline std::string rawBytes(std::uint32_t number, std::uint32_t bytes) {
    std::string raw(bytes, '\0');
    for (std::size_t i = bytes; i-- > 0; number >>= 8) {
        raw[i] = static_cast<char>(static_cast<unsigned char>(number & 0xFF));
    }
    return raw;
}

}  // namespace tables
}  // namespace qvn

#endif  // TABLES_RAW_BYTES_H
