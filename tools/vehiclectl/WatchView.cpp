#include "vehiclectl/WatchView.h"

#include <algorithm>
#include <iterator>
#include <tuple>

#include "desk/Glob.h"

namespace qvn::tools {
namespace {

constexpr long kActiveFor = 3'000'000'000;  // ns after its last change

/// What changes all the time keeps its place: it goes by when that began.
auto changeRank(const PropertyRow& row, long now) {
    const bool active = row.changedAt != 0 && now - row.changedAt < kActiveFor;
    return std::make_tuple(active, active ? row.activeSince : row.changedAt);
}

}  // namespace

bool WatchView::matches(const PropertyInfo& property) const {
    return matchesGlob(filter_.find_first_of("*?") == std::string::npos ? "*" + filter_ + "*" : filter_, property.name);
}

void WatchView::refresh(long now) {
    if (!frozen_) {
        time_ = now;
        seen_.clear();
        for (const PropertyInfo* const property : properties_) {
            seen_.push_back(table_.of(*property));
        }
    }
    rows_.clear();
    std::copy_if(seen_.begin(), seen_.end(), std::back_inserter(rows_),
                 [this](const PropertyRow& row) { return matches(*row.info); });
    std::stable_sort(rows_.begin(), rows_.end(), [this](const PropertyRow& a, const PropertyRow& b) {
        switch (sort_) {
            case Sort::Change:
                return changeRank(a, time_) > changeRank(b, time_);
            case Sort::Name:
                return a.info->name < b.info->name;
            case Sort::Age:
                return a.state.timestamp > b.state.timestamp;
        }
        return false;
    });
}

std::size_t WatchView::top(std::size_t height) {
    const auto last = static_cast<long>(rows_.size() > height ? rows_.size() - height : 0);
    top_ = std::clamp(top_, 0L, last);
    return static_cast<std::size_t>(top_);
}

}  // namespace qvn::tools
