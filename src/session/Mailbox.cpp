#include "session/Mailbox.h"

#include <cmath>
#include <iterator>

namespace qvn {
namespace session {

namespace {

bool sameNumber(double a, double b) {
    return !(a < b) && !(a > b) && std::isnan(a) == std::isnan(b);
}

}  // namespace

Mailbox::Mailbox(const SubscribeOptions& options, std::size_t properties)
    : mChangesOnly(options.isChangesOnly()),
      mLatestOnly(options.isLatestOnly()),
      mMost(options.queueSize()),
      mPeriod(std::chrono::duration_cast<std::chrono::steady_clock::duration>(options.minimumPeriod())),
      mSlots(properties),
      mSpare(mLatestOnly ? properties : 0) {}

Mailbox::Offer Mailbox::offer(std::size_t index, const PropertyState& state, Time now) {
    Slot& slot = mSlots[index];
    if (mLatestOnly && slot.waiting > 0) {
        slot.latest->state = state;
        return Offer::Settled;
    }
    if (slot.isHeldBack || now < slot.opensAt) {  // whoever releases it may be late
        const bool toBeReleased = slot.isHeldBack;
        slot.heldBack = state;
        slot.isHeldBack = true;
        return toBeReleased ? Offer::Settled : Offer::HeldBack;
    }
    return enqueue(index, state, now) ? Offer::Waits : Offer::Settled;
}

bool Mailbox::release(std::size_t index, Time now) {
    mSlots[index].isHeldBack = false;
    return enqueue(index, mSlots[index].heldBack, now);
}

bool Mailbox::take(PropertyState& state) {
    if (mWaiting.empty()) {
        return false;
    }
    const auto first = mWaiting.begin();
    mSpare.splice(mSpare.begin(), mWaiting, first);
    Slot& slot = mSlots[first->index];
    --slot.waiting;
    state = first->state;
    if (mLatestOnly && !isNews(slot, state)) {
        return false;
    }
    slot.last = state;
    slot.hasLast = true;
    state.missed = mMissed;
    mMissed = 0;
    return true;
}

bool Mailbox::isNews(const Slot& slot, const PropertyState& state) const {
    return !mChangesOnly || !slot.hasLast || state.reception != slot.last.reception ||
           state.direction != slot.last.direction || !sameNumber(state.payload, slot.last.payload);
}

/// False when no more updates wait than before.
bool Mailbox::enqueue(std::size_t index, const PropertyState& state, Time now) {
    Slot& slot = mSlots[index];
    if (!isNews(slot, state)) {
        return false;
    }
    slot.opensAt = now + mPeriod;
    if (mLatestOnly) {
        append(index, state);
        return true;
    }
    const bool isFull = mWaiting.size() >= mMost;
    if (isFull) {
        dropOldest();
    }
    append(index, state);
    slot.last = state;
    slot.hasLast = true;
    return !isFull;
}

void Mailbox::append(std::size_t index, const PropertyState& state) {
    if (mSpare.empty()) {
        mSpare.emplace_back();
    }
    mSpare.front() = {index, state};
    mWaiting.splice(mWaiting.end(), mSpare, mSpare.begin());
    Slot& slot = mSlots[index];
    slot.latest = std::prev(mWaiting.end());
    ++slot.waiting;
}

void Mailbox::dropOldest() {
    Slot& slot = mSlots[mWaiting.front().index];
    mSpare.splice(mSpare.begin(), mWaiting, mWaiting.begin());
    ++mMissed;
    if (--slot.waiting == 0) {
        slot.hasLast = false;  // the handler does not know it: the same is news when it comes again
    }
}

}  // namespace session
}  // namespace qvn
