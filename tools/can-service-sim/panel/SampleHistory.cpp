#include "can-service-sim/panel/SampleHistory.h"

#include <algorithm>

namespace qvn::tools {
namespace {

constexpr std::size_t kSamples = 60;

}  // namespace

void SampleHistory::add(const std::function<Json(std::size_t signal)>& valueOf) {
    for (std::size_t signal = 0; signal < mSamples.size(); ++signal) {
        mSamples[signal].push_back(valueOf(signal));
        if (mSamples[signal].size() > kSamples) {
            mSamples[signal].pop_front();
        }
    }
}

Json SampleHistory::moved() const {
    Json all = Json::array();
    for (std::size_t signal = 0; signal < mSamples.size(); ++signal) {
        const std::deque<Json>& samples = mSamples[signal];
        if (std::adjacent_find(samples.begin(), samples.end(), std::not_equal_to<>()) != samples.end()) {
            all.push_back({signal, samples});
        }
    }
    return all;
}

}  // namespace qvn::tools
