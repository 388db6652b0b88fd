#ifndef TABLES_MESSAGE_CATALOGUE_H
#define TABLES_MESSAGE_CATALOGUE_H

#include <cstdint>

#include "tables/SignalLists.h"
#include "tables/Span.h"

namespace qvn {
namespace tables {

/// A whole CAN message whose reception the CAN service supervises.
struct MessageRow {
    std::uint32_t code;
    Span<SignalListRow> signals;
    const char* logFormat;  ///< takes function, line, signal code, signal name, property, status
    int logLine;
};

/// Sorted by code.
extern const Span<MessageRow> kMessages;

/// The message with that code, or null.
const MessageRow* findMessage(std::uint32_t code);

}  // namespace tables
}  // namespace qvn

#endif  // TABLES_MESSAGE_CATALOGUE_H
