#ifndef SESSION_VEHICLE_H
#define SESSION_VEHICLE_H

#include <vehicle/VehicleSession.h>

#include <sys/types.h>

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "client/ProcessEnd.h"
#include "client/VehicleObserver.h"
#include "session/PendingSets.h"
#include "session/Session.h"

namespace qvn {
namespace session {

using platform::vehicle::ServiceState;

/// What the process's client has reported of the vehicle, as long as there is a session; and who is told.
class Vehicle : private platform::vehicle::VehicleObserver, private platform::vehicle::ProcessEnd::Callbacks {
public:
    /// Never destroyed: the library's threads may report until the process has ended.
    static Vehicle& instance();

    /// @throws std::system_error
    void open(const std::shared_ptr<Session>& session);
    void close(Session& session);
    /// Where its thread cannot be ended.
    void keep(std::shared_ptr<Session> session) { mKept.push_back(std::move(session)); }

    /// @throws std::invalid_argument
    std::shared_ptr<Receiver> subscribe(const std::shared_ptr<Session>& session, std::vector<int> properties,
                                        Receiver::Handler handler, const SubscribeOptions& options);
    /// See Subscription.
    void end(Receiver& receiver);

    PropertyState state(int property);
    ServiceState serviceState();
    /// Sends a set that is known to be right, unless the service is away. Where an effect is awaited, that is finished
    /// unless the set is refused.
    /// @throws std::system_error when there is no thread to be had; nothing was sent then
    platform::vehicle::SetResult send(int property, int number, PendingSets::Pending* awaited = nullptr,
                                      bool whenThereAlready = false);

    /// In a child of fork, which has none of the threads: the lock may be held for ever.
    bool isForked() const;

    /// See VehicleSession.
    bool waitUntilIdle(Time deadline, std::string* busy);
    bool waitForService(bool there, Time deadline);

    /// The service's presence as if it were a property: the presence is the number, since when the time stamp.
    static constexpr int kService = 0;

private:
    struct Route {
        Session* session;
        Receiver* receiver;
        std::size_t index;
    };
    struct Record {
        PropertyState state;
        bool isTimedOut = false;
        bool isAway = false;
        std::vector<Route> routes;
    };

    Vehicle();

    void valueReceived(const PropertyState& value) override;
    void statusReported(int property, platform::vehicle::VehiclePropertyStatus status) override;
    void serviceChanged(const ServiceState& state) override;
    void observationEnded() override;

    bool isInside() override;
    bool end(Time deadline) override;
    static void endBeforeStaticObjects();

    void observe() QVN_REQUIRES(mutex);
    void takeSnapshot(const platform::vehicle::VehicleSnapshot& snapshot) QVN_REQUIRES(mutex);
    bool takeValue(Record& record, const PropertyState& value) QVN_REQUIRES(mutex);
    void takeService(const ServiceState& state) QVN_REQUIRES(mutex);
    bool updateReception(Record& record) QVN_REQUIRES(mutex);
    void publish(Record& record) QVN_REQUIRES(mutex);
    void begin(Receiver& receiver, Session& session, bool presentFirst);
    bool endAny(Session& session);
    void route(Receiver& receiver, Session& session) QVN_REQUIRES(mutex);
    void offerPresent(Receiver& receiver, Session& session) QVN_REQUIRES(mutex);
    std::shared_ptr<Receiver> detach(Receiver& receiver, Session& session) QVN_REQUIRES(mutex);

    const platform::vehicle::VehicleClientImpl* mObserved QVN_GUARDED_BY(mutex) = nullptr;
    std::map<int, Record> mRecords QVN_GUARDED_BY(mutex);
    ServiceState mService QVN_GUARDED_BY(mutex);
    bool mIsServed QVN_GUARDED_BY(mutex) = true;  // false: the client could not start
    PendingSets mSets;
    std::vector<std::shared_ptr<Session>> mKept;  // in a child of fork only
    const pid_t mProcess;
};

}  // namespace session
}  // namespace qvn

#endif  // SESSION_VEHICLE_H
