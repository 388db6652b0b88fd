#ifndef TABLES_DECODING_RULES_H
#define TABLES_DECODING_RULES_H

#include <cstdint>

#include "tables/Span.h"

namespace qvn {
namespace tables {

/// What the raw bytes of a received signal become: their number, unsigned and big-endian, times the row's factor.
enum class ValueKind {
    Integer,  ///< an integer; a fraction is cut off
    Float,    ///< a float
    Switch,   ///< an integer, followed by the row's direction code
};

struct DecodingRow {
    std::uint32_t code;
    ValueKind kind;
    std::uint32_t bytes;     ///< 1 or 2
    double factor;           ///< the physical value of one step of the raw number
    const char* unit;        ///< of the physical value; empty for plain numbers and states
    std::int32_t direction;  ///< of a switch, else 0
    const char* logFormat;   ///< takes function, line and the value (a switch: and the direction); null: not logged
};

/// Sorted by code.
extern const Span<DecodingRow> kDecodingRules;

/// The rule for that signal, or null.
const DecodingRow* findDecodingRule(std::uint32_t code);

}  // namespace tables
}  // namespace qvn

#endif  // TABLES_DECODING_RULES_H
