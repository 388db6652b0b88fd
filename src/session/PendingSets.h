#ifndef SESSION_PENDING_SETS_H
#define SESSION_PENDING_SETS_H

#include <vehicle/VehicleSession.h>

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <list>

#include "session/Mailbox.h"
#include "session/Sessions.h"

namespace qvn {
namespace session {

using platform::vehicle::SetEnd;

/// The sets whose effects are waited for. Their time runs on a thread of its own, which is there while there are any:
/// a session's thread may be busy with a handler that waits for one.
class PendingSets {
public:
    using Time = Mailbox::Time;

    struct Pending {
        const Session* session;
        int effect;
        double number;
        long sentAt;  // CLOCK_MONOTONIC in ns: what was received before does not count
        Time deadline;
        std::function<void(SetEnd)> finish;  // is called once, without the lock
        SetEnd end;
        std::uint64_t id;
    };
    /// The sets that have come to their end while the lock was held. To be made before it is taken, so that they are
    /// finished when it is given back.
    class Finished {
    public:
        Finished() = default;
        /// Where an executor runs handlers at once they may end the thread.
        ~Finished() noexcept(false);
        Finished(const Finished&) = delete;
        Finished& operator=(const Finished&) = delete;

    private:
        friend class PendingSets;
        std::list<Pending> mAll;
    };

    /// @returns its identifier
    /// @throws std::system_error when there is no thread to be had
    std::uint64_t add(Pending&& pending) QVN_REQUIRES(mutex);
    /// Takes it out unfinished; nothing when it has ended. To be destroyed without the lock.
    std::list<Pending> remove(std::uint64_t id) QVN_REQUIRES(mutex);

    void valueReceived(const PropertyState& state, Finished& finished) QVN_REQUIRES(mutex);
    /// Unless it has ended.
    void end(std::uint64_t id, SetEnd end, Finished& finished) QVN_REQUIRES(mutex);
    void endAll(SetEnd end, Finished& finished) QVN_REQUIRES(mutex);
    void endAllOf(const Session& session, SetEnd end, Finished& finished) QVN_REQUIRES(mutex);

    /// Whether CAN tells this number of a property; the tolerance only allows for the rounding of floats.
    static bool isReached(const PropertyState& state, double number);

private:
    template <class Matches>
    void finish(SetEnd end, Finished& finished, Matches matches) QVN_REQUIRES(mutex);
    void keepTime();

    std::list<Pending> mPending QVN_GUARDED_BY(mutex);
    std::condition_variable mChanged;
    std::uint64_t mLastId QVN_GUARDED_BY(mutex) = 0;
    bool mTimeIsKept QVN_GUARDED_BY(mutex) = false;
};

}  // namespace session
}  // namespace qvn

#endif  // SESSION_PENDING_SETS_H
