#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <nlohmann/json.hpp>
#include <vector>

#include "desk/Json.h"

namespace qvn::tools {

/// The values of all signals in the last minute, one sample a second.
class SampleHistory {
public:
    explicit SampleHistory(std::size_t signals) : mSamples(signals) {}

    /// Takes a sample of each signal, and forgets the one of a minute ago.
    void add(const std::function<Json(std::size_t signal)>& valueOf);

    /// How many there are of each signal.
    std::size_t size() const { return mSamples.front().size(); }
    /// [[signal, samples]] of those signals whose value has changed meanwhile.
    Json moved() const;

private:
    std::vector<std::deque<Json>> mSamples;
};

}  // namespace qvn::tools
