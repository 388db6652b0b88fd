#include "session/Mailbox.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace qvn::session;
using namespace qvn::platform::vehicle;
using namespace std::chrono_literals;

/// A mailbox of some properties, and the time that a test sets.
class Box {
public:
    explicit Box(const SubscribeOptions& options, std::size_t properties = 2) : mMailbox(options, properties) {}

    Mailbox::Offer offer(double number, std::size_t index = 0, Reception reception = Reception::Received) {
        PropertyState state;
        state.property = static_cast<int>(index);
        state.payload = number;
        state.reception = reception;
        const Mailbox::Offer offer = mMailbox.offer(index, state, now);
        mWaiting += offer == Mailbox::Offer::Waits ? 1 : 0;
        return offer;
    }
    bool release(std::size_t index = 0) {
        const bool waits = mMailbox.release(index, now);
        mWaiting += waits ? 1 : 0;
        return waits;
    }
    /// Everything that waits: "1 2 b:5 3(2)" is 1 and 2 of the first property, 5 of the second, and a 3 before which
    /// two were missed.
    std::string taken() {
        std::string text;
        PropertyState state;
        for (; mWaiting > 0; --mWaiting) {
            if (!mMailbox.take(state)) {
                continue;
            }
            text += (text.empty() ? "" : " ") + std::string(state.property == 1 ? "b:" : "") +
                    std::to_string(state.integer()) +
                    (state.missed > 0 ? "(" + std::to_string(state.missed) + ")" : "");
        }
        return text;
    }
    Mailbox::Time opensAt() const { return mMailbox.opensAt(0); }

    Mailbox::Time now = Mailbox::Time(1h);

private:
    Mailbox mMailbox;
    int mWaiting = 0;
};

TEST(Mailbox, BringsEverythingInOrderAndCountsWhatItHasNoRoomFor) {
    Box box(SubscribeOptions().queue(3));
    for (const double number : {1, 1, 2}) {
        EXPECT_EQ(box.offer(number), Mailbox::Offer::Waits);
    }
    EXPECT_EQ(box.taken(), "1 1 2");
    for (const double number : {1, 2, 3}) {
        EXPECT_EQ(box.offer(number), Mailbox::Offer::Waits);
    }
    EXPECT_EQ(box.offer(4), Mailbox::Offer::Settled);  // in the place of the oldest
    EXPECT_EQ(box.offer(5, 1), Mailbox::Offer::Settled);
    EXPECT_EQ(box.taken(), "3(2) 4 b:5");
    box.offer(6);
    EXPECT_EQ(box.taken(), "6");
}

TEST(Mailbox, LeavesOutWhatIsNoChangeOfValueOrState) {
    Box box(SubscribeOptions().changesOnly());
    EXPECT_EQ(box.offer(1), Mailbox::Offer::Waits);
    EXPECT_EQ(box.offer(1), Mailbox::Offer::Settled);
    box.offer(1, 1);  // the first of another property
    box.offer(1, 0, Reception::TimedOut);
    EXPECT_EQ(box.taken(), "1 b:1 1");
    box.offer(1, 0, Reception::TimedOut);
    EXPECT_EQ(box.taken(), "");
    for (const double number : {2, 1, 2}) {
        box.offer(number, 0, Reception::TimedOut);
    }
    EXPECT_EQ(box.taken(), "2 1 2");  // each was a change when it came

    Box small(SubscribeOptions().changesOnly().queue(2));
    for (const double number : {1, 2, 3}) {
        small.offer(number);
    }
    EXPECT_EQ(small.offer(3), Mailbox::Offer::Settled);  // still to come
    small.offer(5, 1);
    small.offer(6, 1);
    EXPECT_EQ(small.taken(), "b:5(3) b:6");
    EXPECT_EQ(small.offer(3), Mailbox::Offer::Waits) << "the handler has not been given it";
}

TEST(Mailbox, KeepsTheLatestOfEachPropertyForABusyHandler) {
    Box all(SubscribeOptions().latestOnly());
    Box changes(SubscribeOptions().latestOnly().changesOnly());
    for (Box* const box : {&all, &changes}) {
        box->offer(1);
        box->offer(1, 1);
        EXPECT_EQ(box->offer(2), Mailbox::Offer::Settled);
        EXPECT_EQ(box->taken(), "2 b:1");
        box->offer(3);
        box->offer(2);
    }
    EXPECT_EQ(all.taken(), "2");
    EXPECT_EQ(changes.taken(), "");  // back to what the handler knows
    changes.offer(4);
    EXPECT_EQ(changes.taken(), "4");
}

TEST(Mailbox, HoldsBackWhatComesTooEarlyAndDeliversTheLatestOfIt) {
    Box all(SubscribeOptions().atMost(10));
    Box changes(SubscribeOptions().atMost(10).changesOnly());
    for (Box* const box : {&all, &changes}) {
        const Mailbox::Time start = box->now;
        EXPECT_EQ(box->offer(1), Mailbox::Offer::Waits);
        EXPECT_EQ(box->taken(), "1");
        box->now = start + 99ms;
        EXPECT_EQ(box->offer(2), Mailbox::Offer::HeldBack);
        EXPECT_EQ(box->opensAt(), start + 100ms);
        EXPECT_EQ(box->offer(3), Mailbox::Offer::Settled);
        EXPECT_EQ(box->offer(1, 1), Mailbox::Offer::Waits);  // a time of its own
        EXPECT_EQ(box->taken(), "b:1");
        box->now = start + 105ms;
        EXPECT_TRUE(box->release());
        EXPECT_EQ(box->offer(4), Mailbox::Offer::Settled);  // in place of the one that waits
        EXPECT_EQ(box->taken(), "4");
        box->now = start + 200ms;
        EXPECT_EQ(box->offer(5), Mailbox::Offer::HeldBack);  // 95 ms after the one before
        box->offer(4);
        box->now = start + 205ms;
        box->release();
        box->now = start + 1s;
        box->offer(4);
    }
    EXPECT_EQ(all.taken(), "4");
    EXPECT_EQ(changes.taken(), "");

    // Released late, by a thread that was busy: what has come meanwhile is newer.
    all.now += 1s;
    all.offer(5);
    EXPECT_EQ(all.taken(), "5");
    EXPECT_EQ(all.offer(6), Mailbox::Offer::HeldBack);
    all.now += 1s;
    EXPECT_EQ(all.offer(7), Mailbox::Offer::Settled);
    all.release();
    EXPECT_EQ(all.taken(), "7");
}

}  // namespace
