#pragma once

#include <string>
#include <vector>

#include "vehiclectl/PropertyTable.h"

namespace qvn::tools {

/// What a person looks at of a table of properties: which of them, in which order, from which one on.
class WatchView {
public:
    enum class Sort {
        Change,  ///< what changes now, then what changed last, then the others as they are listed
        Name,
        Age  ///< the newest value first
    };

    WatchView(const PropertyTable& table, std::vector<const PropertyInfo*> properties)
        : mTable(table), mProperties(std::move(properties)) {}

    /// Only properties whose names contain the text, or match it as a pattern with * and ?; in any case of letters.
    void filter(const std::string& text) { mFilter = text; }
    const std::string& filter() const { return mFilter; }

    void sortBy(Sort sort) { mSort = sort; }
    Sort sort() const { return mSort; }

    /// While it is frozen the rows stay as they are, whatever arrives.
    void freeze(bool frozen) { mFrozen = frozen; }
    bool frozen() const { return mFrozen; }

    /// Looks at the table anew, unless it is frozen, and lays out the rows.
    void refresh(long now);

    /// The rows that match, in order, as they were at time().
    const std::vector<PropertyRow>& rows() const { return mRows; }
    long time() const { return mTime; }
    std::size_t total() const { return mProperties.size(); }

    /// The first row that is shown when `height` fit. Scrolling goes on from there and ends where the rows do.
    std::size_t top(std::size_t height);
    void scroll(long lines) { mTop += lines; }

private:
    bool matches(const PropertyInfo& property) const;

    const PropertyTable& mTable;
    std::vector<const PropertyInfo*> mProperties;
    std::vector<PropertyRow> mSeen;  // at mTime
    std::vector<PropertyRow> mRows;
    long mTime = 0;
    std::string mFilter;
    Sort mSort = Sort::Change;
    bool mFrozen = false;
    long mTop = 0;
};

}  // namespace qvn::tools
