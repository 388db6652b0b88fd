#include "session/Vehicle.h"

#include <unistd.h>
#include <vehicle/PropertyIds.h>
#include <vehicle/VehicleClient.h>

#include <algorithm>
#include <utility>

#include "client/ProcessCore.h"
#include "client/VehicleClientImpl.h"
#include "session/Properties.h"

namespace qvn {
namespace session {

using namespace platform::vehicle;

constexpr int Vehicle::kService;

namespace {

const char kNotServed[] = "the vehicle client serves nothing (its log tells why); ";

SetResult refused(int property, SetError error, const char* why) {
    SetResult result;
    result.error = error;
    result.text = why + nameOf(property) + " was not set";
    return result;
}

}  // namespace

Vehicle::Vehicle() : mProcess(::getpid()) {
    const sync::MutexLock lock(mutex);
    Sessions::instance().setExitHandler(&Vehicle::endBeforeStaticObjects);
}

bool Vehicle::isForked() const {
    return ::getpid() != mProcess;
}

Vehicle& Vehicle::instance() {
    static Vehicle& vehicle = *new Vehicle;
    return vehicle;
}

void Vehicle::open(const std::shared_ptr<Session>& session) {
    VehicleClient::getInstance();
    ProcessEnd::alsoEnd(*this);
    session->start();
    try {
        const Change change;
        observe();
    } catch (...) {
        close(*session);
        throw;
    }
}

void Vehicle::close(Session& session) {
    {
        PendingSets::Finished finished;  // first of all: a handler may be waiting for one
        const sync::MutexLock lock(mutex);
        session.close();
        mSets.endAllOf(session, SetEnd::SessionEnded, finished);
    }
    session.end();
    while (endAny(session)) {
    }
    const Change change;
    if (Sessions::instance().all().empty() && mObserved != nullptr && mObserved == processCore()) {
        processCore()->observe(nullptr);
        mObserved = nullptr;
    }
}

/// Ends one of the subscriptions of a session that has ended. Its handle may live on, but what it captures does not.
bool Vehicle::endAny(Session& session) {
    std::shared_ptr<Receiver> receiver;
    Receiver::Handler handler;
    const sync::MutexLock lock(mutex);
    receiver = session.anyReceiver();
    if (!receiver) {
        return false;
    }
    detach(*receiver, session);
    if (!session.isRunning(*receiver)) {
        handler.swap(receiver->handler);
    }
    return true;
}

std::shared_ptr<Receiver> Vehicle::subscribe(const std::shared_ptr<Session>& session, std::vector<int> properties,
                                             Receiver::Handler handler, const SubscribeOptions& options) {
    const auto isOfLine = [](int property) {
        return property == ids::BCM8_PASWorkCmd || property == ids::PEPS2_SysPowerMod;
    };
    const bool needsLine = std::any_of(properties.begin(), properties.end(), isOfLine);
    const auto receiver = std::make_shared<Receiver>(session, std::move(properties), std::move(handler), options);
    {
        const Change change;
        observe();
        session->add(receiver);
        session->willBeUsed();
    }
    try {
        begin(*receiver, *session, options.isPresentFirst());
        if (needsLine && processCore() != nullptr) {
            processCore()->observeReverseLine();
        }
    } catch (...) {
        end(*receiver);  // nobody else could
        throw;
    }
    return receiver;
}

void Vehicle::begin(Receiver& receiver, Session& session, bool presentFirst) {
    const Change change;
    route(receiver, session);
    if (presentFirst) {
        offerPresent(receiver, session);
    }
}

void Vehicle::route(Receiver& receiver, Session& session) {
    for (std::size_t i = 0; i < receiver.properties.size(); ++i) {
        mRecords[receiver.properties[i]].routes.push_back({&session, &receiver, i});
    }
}

void Vehicle::offerPresent(Receiver& receiver, Session& session) {
    const Time now = std::chrono::steady_clock::now();
    for (std::size_t i = 0; i < receiver.properties.size(); ++i) {
        const Record& record = mRecords[receiver.properties[i]];
        if (record.state.reception != Reception::NeverReceived) {
            session.offer(receiver, i, record.state, now);
        }
    }
}

void Vehicle::end(Receiver& receiver) {
    std::shared_ptr<Receiver> removed;
    Receiver::Handler handler;
    const std::shared_ptr<Session> session = receiver.session.lock();
    if (!session || isForked()) {
        return;
    }
    sync::MutexLock lock(mutex);
    if (!receiver.ended) {
        removed = detach(receiver, *session);
    }
    const auto hasReturned = [&]() QVN_REQUIRES(mutex) { return !session->isRunning(receiver); };
    if (Sessions::instance().waitFor(*session, lock, hasReturned)) {
        handler.swap(receiver.handler);
    }
}

std::shared_ptr<Receiver> Vehicle::detach(Receiver& receiver, Session& session) {
    for (const int property : receiver.properties) {
        const auto record = mRecords.find(property);
        if (record == mRecords.end()) {
            continue;  // it could not be routed
        }
        std::vector<Route>& routes = record->second.routes;
        routes.erase(std::remove_if(routes.begin(), routes.end(),
                                    [&](const Route& route) { return route.receiver == &receiver; }),
                     routes.end());
    }
    return session.remove(receiver);
}

PropertyState Vehicle::state(int property) {
    const sync::MutexLock lock(mutex);
    const auto found = mRecords.find(property);
    if (found != mRecords.end() && property != kService) {
        return found->second.state;
    }
    PropertyState unknown;
    unknown.property = property;
    return unknown;
}

ServiceState Vehicle::serviceState() {
    const sync::MutexLock lock(mutex);
    return mService;
}

SetResult Vehicle::send(int property, int number, PendingSets::Pending* awaited, bool whenThereAlready) {
    const Session* const session = awaited != nullptr ? awaited->session : nullptr;
    const int effect = awaited != nullptr ? awaited->effect : 0;
    const double effectNumber = awaited != nullptr ? awaited->number : 0.0;
    std::uint64_t id = 0;
    {
        const sync::MutexLock lock(mutex);
        if (!mIsServed || Sessions::instance().hasStopped()) {
            return refused(property, SetError::NotServed, kNotServed);
        }
        if (mService.presence != ServicePresence::There) {
            return refused(property, SetError::ServiceAway, "the CAN service is not there; ");
        }
        id = awaited != nullptr ? mSets.add(std::move(*awaited)) : 0;
    }
    std::vector<int> numbers{number};
    const bool isSent = VehicleClient::getInstance()->setInt32Property(property, numbers);

    PendingSets::Finished finished;
    std::list<PendingSets::Pending> removed;
    const sync::MutexLock lock(mutex);
    if (!isSent) {
        removed = mSets.remove(id);
        return removed.empty() && awaited != nullptr ? SetResult() : refused(property, SetError::NotServed, kNotServed);
    }
    const PropertyState& present = mRecords[effect].state;
    if (whenThereAlready && present.isCurrent() && PendingSets::isReached(present, effectNumber)) {
        mSets.end(id, SetEnd::Reached, finished);
    }
    if (session != nullptr && session->isClosed()) {
        mSets.end(id, SetEnd::SessionEnded, finished);  // a handler has sent it that the end of the session waits for
    }
    return SetResult();
}

}  // namespace session
}  // namespace qvn
