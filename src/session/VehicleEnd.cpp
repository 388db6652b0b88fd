#include <algorithm>
#include <chrono>

#include "session/Properties.h"
#include "session/Vehicle.h"

// Waiting for the handlers of all sessions: in a test, and when the process ends.

namespace qvn {
namespace session {

using namespace platform::vehicle;

namespace {

constexpr std::chrono::seconds kPatienceAtExit(2);

}  // namespace

bool Vehicle::waitUntilIdle(Time deadline, std::string* busy) {
    sync::MutexLock lock(mutex);
    const auto isBusy = [](const Session& session) QVN_REQUIRES(mutex) { return session.isBusy(); };
    if (Sessions::instance().waitForAll(lock, deadline, isBusy)) {
        return true;
    }
    for (const Session* const session : Sessions::instance().all()) {
        if (busy != nullptr && session->isBusy()) {
            *busy = session->busyWith() == kService ? "the CAN service or a set" : nameOf(session->busyWith());
        }
    }
    return false;
}

bool Vehicle::waitForService(bool there, Time deadline) {
    sync::MutexLock lock(mutex);
    return Sessions::instance().waitForAll(lock, deadline, [this, there](const Session&) QVN_REQUIRES(mutex) {
        return (mService.presence == ServicePresence::There) != there;
    });
}

bool Vehicle::isInside() {
    const sync::MutexLock lock(mutex);
    const std::list<Session*>& all = Sessions::instance().all();
    return std::any_of(all.begin(), all.end(),
                       [](const Session* session) QVN_REQUIRES(mutex) { return session->isInside(); });
}

bool Vehicle::end(Time deadline) {
    Sessions& sessions = Sessions::instance();
    {
        PendingSets::Finished finished;  // first of all: a handler may be waiting for one
        const sync::MutexLock lock(mutex);
        sessions.stop();
        mSets.endAll(SetEnd::SessionEnded, finished);
    }
    sync::MutexLock lock(mutex);
    const bool ended =
        sessions.waitForAll(lock, sessions.hasEnded() ? Time() : deadline,
                            [](const Session& session) QVN_REQUIRES(mutex) { return session.isOccupied(); });
    sessions.end();
    return ended;
}

void Vehicle::endBeforeStaticObjects() {
    Vehicle& vehicle = instance();
    if (vehicle.isForked()) {
        return;
    }
    const bool inside = vehicle.isInside();
    const Time now = std::chrono::steady_clock::now();
    if (!vehicle.end(inside ? now : now + kPatienceAtExit) && !inside) {
        ProcessEnd::leaveCallbackBehind();
    }
}

}  // namespace session
}  // namespace qvn
