#ifndef CLIENT_PROCESS_END_H
#define CLIENT_PROCESS_END_H

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

    /// Starts FDBus's own thread, unless it runs, and sees to its end. False when there is no thread to be had.
    static bool startBus();
};

}  // namespace vehicle
}  // namespace platform
}  // namespace qvn

#endif  // CLIENT_PROCESS_END_H
