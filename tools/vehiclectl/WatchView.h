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
        : table_(table), properties_(std::move(properties)) {}

    /// Only properties whose names contain the text, or match it as a pattern with * and ?; in any case of letters.
    void filter(const std::string& text) { filter_ = text; }
    const std::string& filter() const { return filter_; }

    void sortBy(Sort sort) { sort_ = sort; }
    Sort sort() const { return sort_; }

    /// While it is frozen the rows stay as they are, whatever arrives.
    void freeze(bool frozen) { frozen_ = frozen; }
    bool frozen() const { return frozen_; }

    /// Looks at the table anew, unless it is frozen, and lays out the rows.
    void refresh(long now);

    /// The rows that match, in order, as they were at time().
    const std::vector<PropertyRow>& rows() const { return rows_; }
    long time() const { return time_; }
    std::size_t total() const { return properties_.size(); }

    /// The first row that is shown when `height` fit. Scrolling goes on from there and ends where the rows do.
    std::size_t top(std::size_t height);
    void scroll(long lines) { top_ += lines; }

private:
    bool matches(const PropertyInfo& property) const;

    const PropertyTable& table_;
    std::vector<const PropertyInfo*> properties_;
    std::vector<PropertyRow> seen_;  // at time_
    std::vector<PropertyRow> rows_;
    long time_ = 0;
    std::string filter_;
    Sort sort_ = Sort::Change;
    bool frozen_ = false;
    long top_ = 0;
};

}  // namespace qvn::tools
