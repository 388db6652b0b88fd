#include "can-service-sim/panel/PageStream.h"

#include <chrono>
#include <utility>

namespace qvn::tools {
namespace {

constexpr std::size_t kMostWaiting = 100;  // ten seconds of a vehicle that moves
constexpr std::chrono::seconds kPatience{2};

}  // namespace

void PageStream::put(Text text) {
    const sync::MutexLock lock(mutex_);
    if (waiting_.size() < kMostWaiting) {
        waiting_.push_back(std::move(text));
    } else {
        ended_ = true;
    }
    changed_.notify_one();
}

bool PageStream::take(std::vector<Text>* texts) {
    texts->clear();
    sync::MutexLock lock(mutex_);
    changed_.wait_for(lock.native(), kPatience, [this]() QVN_REQUIRES(mutex_) { return ended_ || !waiting_.empty(); });
    texts->swap(waiting_);
    return !ended_;
}

void PageStream::end() {
    const sync::MutexLock lock(mutex_);
    ended_ = true;
    changed_.notify_one();
}

bool PageStream::ended() const {
    const sync::MutexLock lock(mutex_);
    return ended_;
}

}  // namespace qvn::tools
