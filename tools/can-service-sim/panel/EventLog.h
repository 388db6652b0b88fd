#pragma once

#include <cstddef>
#include <deque>
#include <nlohmann/json.hpp>

#include "desk/Json.h"

namespace qvn::tools {

/// The latest events of the journal, 300 of sets and their answers and 300 of everything else: a trace that is played
/// again and again must not push sets out.
class EventLog {
public:
    /// Keeps an event, with its number as n; they count from 1.
    void add(Json event);

    /// The number of the latest event; 0 when there is none.
    std::size_t last() const { return mLast; }
    /// The events after that number, in no particular order.
    Json since(std::size_t number) const;

private:
    std::deque<Json> mOfSets;
    std::deque<Json> mOthers;
    std::size_t mLast = 0;
};

}  // namespace qvn::tools
