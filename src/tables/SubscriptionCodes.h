#ifndef TABLES_SUBSCRIPTION_CODES_H
#define TABLES_SUBSCRIPTION_CODES_H

#include <cstdint>

#include "tables/Span.h"

namespace qvn {
namespace tables {

/// What the client subscribes on every connection, in this order: the signals, then the whole messages.
extern const Span<std::uint32_t> kSubscriptionCodes;

}  // namespace tables
}  // namespace qvn

#endif  // TABLES_SUBSCRIPTION_CODES_H
