#ifndef TABLES_SET_CATALOGUE_H
#define TABLES_SET_CATALOGUE_H

#include <cstddef>
#include <cstdint>

namespace qvn {
namespace tables {

/// How a value is laid out in the raw bytes of a set request. Words are big-endian.
enum class SetEncoding {
    U8,         ///< one byte
    U8Plus,     ///< one byte: value + offset
    U16Be,      ///< two bytes
    U16BePlus,  ///< two bytes: value + offset
};

struct SetRow {
    std::uint32_t code;
    SetEncoding encoding;
    int offset;             ///< 0 unless the encoding adds one
    const char* logFormat;  ///< takes function, line and the first raw byte
    int logLine;
};

constexpr std::size_t kSetSignalCount = 86;

/// Sorted by code.
extern const SetRow kSetSignals[kSetSignalCount];

/// The set signal with that code, or null for a signal that cannot be set.
const SetRow* findSetSignal(std::uint32_t code);

}  // namespace tables
}  // namespace qvn

#endif  // TABLES_SET_CATALOGUE_H
