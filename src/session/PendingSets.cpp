#include "session/PendingSets.h"

#include <algorithm>
#include <cmath>
#include <thread>
#include <utility>

#include "callback/CallApplication.h"

namespace qvn {
namespace session {

namespace {

/// Far less than a step of any signal.
constexpr double kTolerance = 1e-3;

}  // namespace

std::uint64_t PendingSets::add(Pending&& pending) {
    if (!mTimeIsKept) {
        std::thread([this] { keepTime(); }).detach();
        mTimeIsKept = true;
    }
    pending.id = ++mLastId;
    mPending.push_back(std::move(pending));
    mChanged.notify_all();
    return mLastId;
}

std::list<PendingSets::Pending> PendingSets::remove(std::uint64_t id) {
    std::list<Pending> removed;
    const auto found = std::find_if(mPending.begin(), mPending.end(), [id](const Pending& p) { return p.id == id; });
    if (found != mPending.end()) {
        removed.splice(removed.end(), mPending, found);
    }
    return removed;
}

void PendingSets::valueReceived(const PropertyState& state, Finished& finished) {
    finish(SetEnd::Reached, finished, [&state](const Pending& pending) {
        return pending.effect == state.property && state.timestamp >= pending.sentAt &&
               isReached(state, pending.number);
    });
}

void PendingSets::end(std::uint64_t id, SetEnd end, Finished& finished) {
    finish(end, finished, [id](const Pending& pending) { return pending.id == id; });
}

void PendingSets::endAll(SetEnd end, Finished& finished) {
    finish(end, finished, [](const Pending&) { return true; });
}

void PendingSets::endAllOf(const Session& session, SetEnd end, Finished& finished) {
    finish(end, finished, [&session](const Pending& pending) { return pending.session == &session; });
}

bool PendingSets::isReached(const PropertyState& state, double number) {
    return state.origin == platform::vehicle::ValueOrigin::Can && std::fabs(state.payload - number) < kTolerance;
}

template <class Matches>
void PendingSets::finish(SetEnd end, Finished& finished, Matches matches) {
    for (auto pending = mPending.begin(); pending != mPending.end();) {
        const auto each = pending++;
        if (matches(*each)) {
            each->end = end;
            finished.mAll.splice(finished.mAll.end(), mPending, each);
            mChanged.notify_all();
        }
    }
}

void PendingSets::keepTime() {
    for (;;) {
        Finished finished;
        sync::MutexLock lock(mutex);
        if (mPending.empty()) {
            mTimeIsKept = false;
            return;
        }
        const auto next = std::min_element(mPending.begin(), mPending.end(),
                                           [](const Pending& a, const Pending& b) { return a.deadline < b.deadline; });
        const Time deadline = next->deadline;
        mChanged.wait_until(lock.native(), deadline);
        const Time now = std::chrono::steady_clock::now();
        finish(SetEnd::TimedOut, finished, [now](const Pending& pending) { return pending.deadline <= now; });
    }
}

PendingSets::Finished::~Finished() noexcept(false) {
    for (const Pending& pending : mAll) {
        callback::callApplication([&pending] { pending.finish(pending.end); });  // memory may be short
    }
}

}  // namespace session
}  // namespace qvn
