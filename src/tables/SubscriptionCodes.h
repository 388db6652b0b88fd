#ifndef TABLES_SUBSCRIPTION_CODES_H
#define TABLES_SUBSCRIPTION_CODES_H

#include <cstddef>
#include <cstdint>

namespace qvn {
namespace tables {

constexpr std::size_t kSubscriptionCodeCount = 178;

/// What the client subscribes on every connection, in this order: 154 signals, then 24 whole messages.
extern const std::uint32_t kSubscriptionCodes[kSubscriptionCodeCount];

}  // namespace tables
}  // namespace qvn

#endif  // TABLES_SUBSCRIPTION_CODES_H
