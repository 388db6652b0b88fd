#ifndef SESSION_MAILBOX_H
#define SESSION_MAILBOX_H

#include <vehicle/VehicleSession.h>

#include <chrono>
#include <cstddef>
#include <list>
#include <vector>

namespace qvn {
namespace session {

using platform::vehicle::PropertyState;
using platform::vehicle::SubscribeOptions;

/// What waits for the handler of one subscription: decides what of the updates it is given, and when. Its properties
/// are numbered. Once the most that ever waited has been there, nothing is allocated any more.
class Mailbox {
public:
    using Time = std::chrono::steady_clock::time_point;
    enum class Offer {
        Settled,  ///< it takes the place of one that waits, or is not wanted
        Waits,    ///< there is one more to take
        HeldBack  ///< it is to be released at opensAt()
    };

    Mailbox(const SubscribeOptions& options, std::size_t properties);

    Offer offer(std::size_t index, const PropertyState& state, Time now);
    /// When the next update of a property may be given to the handler.
    Time opensAt(std::size_t index) const { return mSlots[index].opensAt; }
    /// What was held back waits now. False when that is not one more to take.
    bool release(std::size_t index, Time now);

    /// The oldest update. False when it is no news any more.
    bool take(PropertyState& state);

private:
    struct Waiting {
        std::size_t index;
        PropertyState state;
    };
    struct Slot {
        std::size_t waiting = 0;              // updates
        std::list<Waiting>::iterator latest;  // of them
        bool isHeldBack = false;
        PropertyState heldBack;
        bool hasLast = false;
        PropertyState last;  // what the handler knows, or will
        Time opensAt;
    };

    bool isNews(const Slot& slot, const PropertyState& state) const;
    bool enqueue(std::size_t index, const PropertyState& state, Time now);
    void append(std::size_t index, const PropertyState& state);
    void dropOldest();

    const bool mChangesOnly;
    const bool mLatestOnly;
    const std::size_t mMost;
    const std::chrono::steady_clock::duration mPeriod;
    std::vector<Slot> mSlots;
    std::list<Waiting> mWaiting;
    std::list<Waiting> mSpare;
    unsigned long mMissed = 0;
};

}  // namespace session
}  // namespace qvn

#endif  // SESSION_MAILBOX_H
