#ifndef CLIENT_PROCESS_END_H
#define CLIENT_PROCESS_END_H

#include <sys/types.h>

#include <ios>
#include <streambuf>

namespace qvn {
namespace platform {
namespace vehicle {

class VehicleClientImpl;

/// FDBus's context is a static object, and its destructor may write a line of its own to standard output, among what
/// the application prints there. Made before the context, an object of this class ends the silence that begins with
/// ProcessEnd, which is made after it: between the two the context is destroyed.
class BusSilence {
public:
    BusSilence() = default;
    ~BusSilence();
    BusSilence(const BusSilence&) = delete;
    BusSilence& operator=(const BusSilence&) = delete;

    void begin();

private:
    std::streambuf* mOutput = nullptr;
    std::ios_base::iostate mState = std::ios_base::goodbit;
};

/// Ends a core's traffic when the process returns from main or calls exit(), on whatever thread. FDBus does not survive
/// its static objects while a client is at work, and no callback may run into the destruction of the application's own.
/// The core itself stays, for whoever still calls it.
///
/// The process ends in any case: the end waits two seconds for a callback that runs, and two for the bus. A bus that
/// does not come to rest (it may be writing to a service that is stopped) would crash in its own destructors; the
/// process then ends without them, with status EXIT_FAILURE. A child of fork, which has none of the threads, just ends.
class ProcessEnd {
public:
    ProcessEnd(VehicleClientImpl& core, BusSilence& silence);
    ~ProcessEnd();
    ProcessEnd(const ProcessEnd&) = delete;
    ProcessEnd& operator=(const ProcessEnd&) = delete;

private:
    VehicleClientImpl& mCore;
    BusSilence& mSilence;
    const pid_t mProcess;
};

}  // namespace vehicle
}  // namespace platform
}  // namespace qvn

#endif  // CLIENT_PROCESS_END_H
