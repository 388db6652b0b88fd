#ifndef TABLES_IDENTIFIER_WALK_H
#define TABLES_IDENTIFIER_WALK_H

#include <algorithm>
#include <cstddef>
#include <vector>

namespace qvn {
namespace tables {

/// Index of the first `id` at or after `from`, or ids.size(). Goes by blocks that it does not leave early, which lets
/// the compiler compare several identifiers in one instruction.
template <class Id>
std::size_t findIdentifier(const std::vector<Id>& ids, Id id, std::size_t from = 0) {
    constexpr std::ptrdiff_t kBlock = 32;
    const auto isInBlock = [id](const Id* block) {
        int matches = 0;
        for (std::ptrdiff_t i = 0; i < kBlock; ++i) {
            matches |= block[i] == id ? -1 : 0;  // all bits, as the processor's compare leaves them
        }
        return matches != 0;
    };
    const Id* at = ids.data() + from;
    const Id* const end = ids.data() + ids.size();
    while (end - at >= kBlock && !isInBlock(at)) {
        at += kBlock;
    }
    return static_cast<std::size_t>(std::find(at, end, id) - ids.data());
}

}  // namespace tables
}  // namespace qvn

#endif  // TABLES_IDENTIFIER_WALK_H
