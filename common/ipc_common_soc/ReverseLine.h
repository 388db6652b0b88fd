#ifndef IPC_COMMON_SOC_REVERSE_LINE_H
#define IPC_COMMON_SOC_REVERSE_LINE_H

#include <cstdint>

// The GPIO line that tells of the reverse gear where CAN does not yet.

namespace qvn {
namespace wire {

constexpr int kReverseLine = 87;
/// The levels of the line, which is active low.
constexpr int kReverseEngaged = 0;
constexpr int kReverseReleased = 1;
/// For gpioport_irq_func_register(): both edges of a line.
constexpr int kBothEdges = 3;

/// The properties of which the vehicle client makes values from the line. A CAN signal of one byte feeds each, too.
constexpr std::int32_t kParkingWorkCommand = 0x2140307A;
constexpr std::int32_t kSystemPowerMode = 0x21403837;

}  // namespace wire
}  // namespace qvn

#endif  // IPC_COMMON_SOC_REVERSE_LINE_H
