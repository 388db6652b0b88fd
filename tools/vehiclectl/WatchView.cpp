#include "vehiclectl/WatchView.h"

#include <algorithm>
#include <iterator>
#include <tuple>

#include "desk/Glob.h"

namespace qvn::tools {
namespace {

/// What changes all the time keeps its place: it goes by when that began.
auto changeRank(const PropertyRow& row, long now) {
    const bool active = row.changedAt != 0 && now - row.changedAt < kActiveFor;
    return std::make_tuple(active, active ? row.activeSince : row.changedAt);
}

}  // namespace

bool WatchView::matches(const PropertyInfo& property) const {
    return matchesGlob(mFilter.find_first_of("*?") == std::string::npos ? "*" + mFilter + "*" : mFilter, property.name);
}

void WatchView::refresh(long now) {
    if (!mFrozen) {
        mTime = now;
        mSeen.clear();
        for (const PropertyInfo* const property : mProperties) {
            mSeen.push_back(mTable.of(*property));
        }
    }
    mRows.clear();
    std::copy_if(mSeen.begin(), mSeen.end(), std::back_inserter(mRows),
                 [this](const PropertyRow& row) { return matches(*row.info); });
    std::stable_sort(mRows.begin(), mRows.end(), [this](const PropertyRow& a, const PropertyRow& b) {
        switch (mSort) {
            case Sort::Change:
                return changeRank(a, mTime) > changeRank(b, mTime);
            case Sort::Name:
                return a.info->name < b.info->name;
            case Sort::Age:
                return a.state.timestamp > b.state.timestamp;
        }
        return false;
    });
}

std::size_t WatchView::top(std::size_t height) {
    const auto last = static_cast<long>(mRows.size() > height ? mRows.size() - height : 0);
    mTop = std::clamp(mTop, 0L, last);
    return static_cast<std::size_t>(mTop);
}

}  // namespace qvn::tools
