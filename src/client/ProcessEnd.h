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
/// The process ends in any case: at most two seconds pass for a callback that runs and for the bus. A bus that does not
/// come to rest (it may be writing to a service that is stopped) would crash in its own destructors; the process then
/// ends without them, with status EXIT_FAILURE. An exit() inside a callback waits for no other callback. A child of
/// fork, which has none of the threads, just ends.
class ProcessEnd {
public:
    /// Starts FDBus's own thread, unless it runs, and sees to its end. False when there is no thread to be had.
    static bool startBus();
    /// From now on the end of the process ends this core's traffic, too. The core itself stays, for whoever still calls
    /// it, and must never be destroyed.
    static void cover(VehicleClientImpl& core);
};

}  // namespace vehicle
}  // namespace platform
}  // namespace qvn

#endif  // CLIENT_PROCESS_END_H
