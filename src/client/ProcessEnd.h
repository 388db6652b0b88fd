#ifndef CLIENT_PROCESS_END_H
#define CLIENT_PROCESS_END_H

#include <chrono>

namespace qvn {
namespace platform {
namespace vehicle {

class VehicleClientImpl;

/// Ends the traffic when the process returns from main or calls exit(), on whatever thread. FDBus does not survive its
/// static objects while its thread runs or a client is at work, and no callback may run into the destruction of the
/// application's own objects.
///
/// The process ends in any case: at most two seconds pass for a core that is being made or destroyed and for callbacks
/// that run, and then half a second for the bus. A bus that does not come to rest (it may be writing to a service that
/// is stopped) would crash in its own destructors, and a thread that writes to a log which nobody reads would hold up
/// those of the standard streams; the process then ends without them, with status EXIT_FAILURE. An exit() inside a
/// callback waits for no other callback. A child of fork, which has none of the threads, just ends.
class ProcessEnd {
public:
    /// Callbacks of the application that run on other threads than a core's.
    class Callbacks {
    public:
        /// Whether the calling thread is inside one.
        virtual bool isInside() = 0;
        /// Lets no further one begin, and waits for those that run, other than on the calling thread. False when the
        /// time is over before.
        virtual bool end(std::chrono::steady_clock::time_point deadline) = 0;

    protected:
        ~Callbacks() = default;
    };

    /// While a core is made or destroyed. The end of the process waits for that; once it has begun, no core begins any
    /// more, and none that there is may be destroyed: it stays as it is, for whoever still calls it.
    class CoreChange {
    public:
        enum Kind { kMade, kDestroyed };

        CoreChange(VehicleClientImpl& core, Kind kind);
        ~CoreChange();
        CoreChange(const CoreChange&) = delete;
        CoreChange& operator=(const CoreChange&) = delete;

        /// False when the process is ending: nothing must be changed.
        explicit operator bool() const { return mAllowed; }

    private:
        const bool mAllowed;
    };

    /// Has these ended with those of the cores; they live for ever.
    static void alsoEnd(Callbacks& callbacks);

    /// Logs, once, that the process ends without a callback that still runs.
    static void leaveCallbackBehind();

    /// Starts FDBus's own thread, unless it runs, and sees to its end. False when there is no thread to be had.
    static bool startBus();
};

}  // namespace vehicle
}  // namespace platform
}  // namespace qvn

#endif  // CLIENT_PROCESS_END_H
