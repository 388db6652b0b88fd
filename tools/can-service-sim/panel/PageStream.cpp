#include "can-service-sim/panel/PageStream.h"

#include <chrono>
#include <utility>

namespace qvn::tools {
namespace {

constexpr std::size_t kMostWaiting = 100;  // ten seconds of a vehicle that moves
constexpr std::chrono::seconds kPatience{2};

}  // namespace

void PageStream::put(Text text) {
    const sync::MutexLock lock(mMutex);
    if (mWaiting.size() < kMostWaiting) {
        mWaiting.push_back(std::move(text));
    } else {
        mEnded = true;
    }
    mChanged.notify_one();
}

bool PageStream::take(std::vector<Text>* texts) {
    texts->clear();
    sync::MutexLock lock(mMutex);
    mChanged.wait_for(lock.native(), kPatience, [this]() QVN_REQUIRES(mMutex) { return mEnded || !mWaiting.empty(); });
    texts->swap(mWaiting);
    return !mEnded;
}

void PageStream::end() {
    const sync::MutexLock lock(mMutex);
    mEnded = true;
    mChanged.notify_one();
}

bool PageStream::ended() const {
    const sync::MutexLock lock(mMutex);
    return mEnded;
}

}  // namespace qvn::tools
