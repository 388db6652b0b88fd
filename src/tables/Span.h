#ifndef TABLES_SPAN_H
#define TABLES_SPAN_H

#include <cstddef>

namespace qvn {
namespace tables {

/// All rows of a table, whose number follows from the table itself.
template <class Row>
class Span {
public:
    template <std::size_t N>
    constexpr Span(const Row (&rows)[N]) : mRows(rows), mSize(N) {}  // NOLINT(google-explicit-constructor)

    constexpr const Row* begin() const { return mRows; }
    constexpr const Row* end() const { return mRows + mSize; }
    constexpr std::size_t size() const { return mSize; }
    constexpr const Row& operator[](std::size_t index) const { return mRows[index]; }

private:
    const Row* mRows;
    std::size_t mSize;
};

}  // namespace tables
}  // namespace qvn

#endif  // TABLES_SPAN_H
