#ifndef TABLES_DECODING_RULES_H
#define TABLES_DECODING_RULES_H

#include <cstddef>
#include <cstdint>

namespace qvn {
namespace tables {

/// How the raw bytes of a received signal become a value. Words are unsigned and big-endian.
enum class DecodingRule {
    Byte,           ///< byte 0, as an integer
    Word,           ///< word, as an integer
    VehicleSpeed,   ///< word x 0.05625, as a float (km/h)
    SteeringAngle,  ///< word x 0.1, as a float (degrees, without sign)
    WheelSpeed,     ///< word x 0.05625, cut to a whole number (km/h)
    Switch,         ///< byte 0, followed by the row's direction code
};

struct DecodingRow {
    std::uint32_t code;
    DecodingRule rule;
    std::int32_t direction;  ///< of a switch, else 0
    const char* logFormat;   ///< takes function, line and the value (a switch: and the direction); null: not logged
};

constexpr std::size_t kDecodingRuleCount = 156;

/// Sorted by code.
extern const DecodingRow kDecodingRules[kDecodingRuleCount];

/// The rule for that signal, or null.
const DecodingRow* findDecodingRule(std::uint32_t code);

}  // namespace tables
}  // namespace qvn

#endif  // TABLES_DECODING_RULES_H
