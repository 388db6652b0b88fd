#ifndef TABLES_SORTED_BY_CODE_H
#define TABLES_SORTED_BY_CODE_H

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace qvn {
namespace tables {

/// Index of the first row whose code is not above its predecessor's, or N for a table that is sorted and free of
/// duplicates.
template <class Row, std::size_t N>
constexpr std::size_t firstUnsortedRow(const Row (&rows)[N]) {
    for (std::size_t i = 1; i < N; ++i) {
        if (rows[i].code <= rows[i - 1].code) {
            return i;
        }
    }
    return N;
}

/// The row of `code` in a table sorted by code, or null.
template <class Row, std::size_t N>
const Row* findByCode(const Row (&rows)[N], std::uint32_t code) {
    const Row* const end = rows + N;
    const Row* const row =
        std::lower_bound(rows, end, code, [](const Row& r, std::uint32_t wanted) { return r.code < wanted; });
    return row != end && row->code == code ? row : nullptr;
}

}  // namespace tables
}  // namespace qvn

#endif  // TABLES_SORTED_BY_CODE_H
