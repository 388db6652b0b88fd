#include <chrono>

#include "client/ProcessCore.h"
#include "client/VehicleClientImpl.h"
#include "session/Vehicle.h"
#include "sync/MonotonicTime.h"

// What the client reports, and who is told.

namespace qvn {
namespace session {

using namespace platform::vehicle;

void Vehicle::observe() {
    VehicleClientImpl* const core = processCore();
    if (core != nullptr && core != mObserved) {
        mObserved = nullptr;  // should memory be short now, the next one tries again
        mService = ServiceState();
        for (auto& each : mRecords) {
            each.second.state = PropertyState();
            each.second.state.property = each.first;
            each.second.isTimedOut = each.second.isAway = false;
        }
        takeSnapshot(core->observe(this));
        mObserved = core;
    }
}

void Vehicle::takeSnapshot(const VehicleSnapshot& snapshot) {
    takeService(snapshot.service);
    mIsServed = !snapshot.values.empty();
    for (const PropertyState& value : snapshot.values) {
        Record& record = mRecords[value.property];
        if (value.hasValue() && takeValue(record, value)) {
            record.isAway = value.timestamp != 0 && value.timestamp < mService.since;  // from an earlier connection
        } else if (!record.state.hasValue()) {
            record.state.property = value.property;
            record.state.type = value.type;
        }
    }
    for (const int property : snapshot.timedOut) {
        mRecords[property].isTimedOut = true;
    }
    for (auto& each : mRecords) {
        if (each.first != kService && updateReception(each.second)) {
            publish(each.second);
        }
    }
}

void Vehicle::valueReceived(const PropertyState& value) {
    PendingSets::Finished finished;
    const Change change;
    Record& record = mRecords[value.property];
    if (takeValue(record, value)) {
        record.isAway = false;
        updateReception(record);
        publish(record);
        mSets.valueReceived(record.state, finished);
    }
}

/// False for a value that a newer one has overtaken, and for one of the reverse line where CAN has said something.
bool Vehicle::takeValue(Record& record, const PropertyState& value) {
    const bool isOvertaken = value.timestamp != 0 && value.timestamp <= record.state.timestamp;
    const bool isOfCan = record.state.hasValue() && record.state.origin == ValueOrigin::Can;
    if (isOvertaken || (isOfCan && value.origin == ValueOrigin::ReverseLine)) {
        return false;
    }
    record.state = value;
    return true;
}

void Vehicle::statusReported(int property, VehiclePropertyStatus status) {
    const Change change;
    Record& record = mRecords[property];
    record.isTimedOut = status == VEHICLE_PROPERTY_STATUS_TIMEOUT;
    if (updateReception(record)) {
        publish(record);
    }
}

void Vehicle::serviceChanged(const ServiceState& state) {
    PendingSets::Finished finished;
    const Change change;
    takeService(state);
    if (state.presence == ServicePresence::Gone) {
        mSets.endAll(SetEnd::ServiceGone, finished);
    }
}

/// An application has deleted the process's client; the one that comes in its place is observed when it is needed.
void Vehicle::observationEnded() {
    {
        const sync::MutexLock lock(mutex);
        if (mObserved != nullptr && mObserved == processCore()) {
            return;  // it is observed already
        }
        mObserved = nullptr;
    }
    ServiceState gone;
    gone.presence = ServicePresence::Gone;
    gone.since = sync::monotonicTime();
    serviceChanged(gone);
}

void Vehicle::takeService(const ServiceState& state) {
    const bool isOvertaken = state.since != 0 && state.since <= mService.since;
    if (isOvertaken) {
        return;
    }
    mService = state;
    Record& service = mRecords[kService];
    service.state.property = kService;
    service.state.payload = static_cast<double>(state.presence);
    service.state.timestamp = state.since;
    service.state.reception = Reception::Received;
    publish(service);
    Sessions::instance().notifyWaiters();
    if (state.presence != ServicePresence::Gone) {
        return;
    }
    for (auto& each : mRecords) {
        Record& record = each.second;
        record.isTimedOut = false;
        record.isAway = record.isAway || record.state.reception != Reception::NeverReceived;
        if (each.first != kService && updateReception(record)) {
            publish(record);
        }
    }
}

bool Vehicle::updateReception(Record& record) {
    const Reception before = record.state.reception;
    record.state.reception = record.isTimedOut         ? Reception::TimedOut
                             : record.isAway           ? Reception::ServiceAway
                             : record.state.hasValue() ? Reception::Received
                                                       : Reception::NeverReceived;
    return record.state.reception != before;
}

void Vehicle::publish(Record& record) {
    if (record.routes.empty()) {
        return;
    }
    const Time now = std::chrono::steady_clock::now();
    for (const Route& route : record.routes) {
        route.session->offer(*route.receiver, route.index, record.state, now);
    }
}

}  // namespace session
}  // namespace qvn
