#ifndef TABLES_SET_CATALOGUE_H
#define TABLES_SET_CATALOGUE_H

#include <cstdint>

#include "tables/SignalLists.h"
#include "tables/Span.h"

namespace qvn {
namespace tables {

/// A signal that the head unit may set. Its raw bytes are value + offset, big-endian.
struct SetRow {
    std::uint32_t code;
    std::uint32_t bytes;  ///< 1 or 2
    int offset;
    const char* logFormat;  ///< takes function, line and the first raw byte
    int logLine;
};

/// Sorted by code.
extern const Span<SetRow> kSetSignals;

/// A CAN message that the head unit sends. It has no code of its own: nobody subscribes it.
struct SetMessageRow {
    const char* name;  ///< "QVN_SET_HUT34"
    Span<SignalListRow> signals;
};

extern const Span<SetMessageRow> kSetMessages;

/// The smallest and largest number that a set signal can carry.
struct SetRange {
    std::int32_t low;
    std::int32_t high;
};

SetRange setRange(const SetRow& row);

/// The set signal with that code, or null for a signal that cannot be set.
const SetRow* findSetSignal(std::uint32_t code);

}  // namespace tables
}  // namespace qvn

#endif  // TABLES_SET_CATALOGUE_H
