#ifndef TABLES_MESSAGE_CATALOGUE_H
#define TABLES_MESSAGE_CATALOGUE_H

#include <cstddef>
#include <cstdint>

#include "tables/SignalLists.h"

namespace qvn {
namespace tables {

/// A whole CAN message whose reception the CAN service supervises.
struct MessageRow {
    std::uint32_t code;
    const SignalListRow* signals;
    std::size_t signalCount;
    const char* logFormat;  ///< takes function, line, signal code, signal name, property, status
    int logLine;
};

constexpr std::size_t kMessageCount = 24;

/// Sorted by code.
extern const MessageRow kMessages[kMessageCount];

/// The message with that code, or null.
const MessageRow* findMessage(std::uint32_t code);

}  // namespace tables
}  // namespace qvn

#endif  // TABLES_MESSAGE_CATALOGUE_H
