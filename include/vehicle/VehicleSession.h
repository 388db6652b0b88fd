#ifndef VEHICLE_VEHICLE_SESSION_H
#define VEHICLE_VEHICLE_SESSION_H

#include <vehicle/VehicleState.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <vector>

#if defined(__GNUC__)
#define QVN_VEHICLE_KEEP __attribute__((warn_unused_result))
#else
#define QVN_VEHICLE_KEEP
#endif

namespace qvn {
namespace session {
class Receiver;
class Session;
}  // namespace session

namespace platform {
namespace vehicle {

/// What a subscription's handler is given. Without further words: every reception and every change of the reception
/// state, the present value first.
class SubscribeOptions {
public:
    /// Only what differs from the update before, in the value or in the reception state.
    SubscribeOptions& changesOnly() {
        mChangesOnly = true;
        return *this;
    }
    /// At most so many updates a second of each property, for example 10 or 0.5; more than 0. What comes in between is
    /// left out, but for the latest: that one is delivered when its time has come.
    SubscribeOptions& atMost(double perSecond) {
        mMinimumPeriod = std::chrono::duration<double>(1.0 / perSecond);
        return *this;
    }
    /// While the handler is busy only the latest update of each property waits for it. Always so with atMost().
    SubscribeOptions& latestOnly() {
        mLatestOnly = true;
        return *this;
    }
    /// Only what comes after the subscription.
    SubscribeOptions& withoutPresent() {
        mPresentFirst = false;
        return *this;
    }
    /// How many updates wait for the handler at most, 256 by default; at least 1. When one more comes the oldest is
    /// dropped, and the handler's next update tells how many it has missed.
    SubscribeOptions& queue(std::size_t updates) {
        mQueueSize = updates;
        return *this;
    }

    bool isChangesOnly() const { return mChangesOnly; }
    bool isLatestOnly() const { return mLatestOnly || mMinimumPeriod.count() > 0; }
    bool isPresentFirst() const { return mPresentFirst; }
    std::size_t queueSize() const { return mQueueSize; }
    std::chrono::duration<double> minimumPeriod() const { return mMinimumPeriod; }

private:
    std::chrono::duration<double> mMinimumPeriod{0};
    std::size_t mQueueSize = 256;
    bool mChangesOnly = false;
    bool mLatestOnly = false;
    bool mPresentFirst = true;
};

/// A subscription lasts as long as this object and its session do. It may outlive the session. Any thread may end it,
/// also while another one assigns to it; a handler that runs before its own subscription was assigned ends nothing.
class QVN_VEHICLE_API Subscription {
public:
    Subscription();  ///< of nothing
    ~Subscription();
    Subscription(Subscription&& other) noexcept;
    Subscription& operator=(Subscription&& other) noexcept;  ///< ends the one that it held

    /// When it returns the handler does not run, and will not run again. Called inside that handler it does not wait
    /// for its end; nor where the handler itself waits, by ending a subscription or a session, for the one that calls.
    /// Do not call it with a lock held that the handler takes, nor inside VehicleClient's `changed` when the handler
    /// calls getters of VehicleClient: they wait for `changed`.
    void end();

private:
    friend class VehicleSession;
    explicit Subscription(std::shared_ptr<session::Receiver> receiver);
    std::shared_ptr<session::Receiver> exchange(std::shared_ptr<session::Receiver> receiver) noexcept;

    std::shared_ptr<session::Receiver> mReceiver;
};

/// Why a set was refused: nothing was sent then.
enum class SetError : std::int32_t {
    None,             ///< it was handed to the bus
    UnknownProperty,  ///< no property has the identifier
    NotSettable,      ///< the property is only reported by the vehicle
    OutOfRange,       ///< not a whole number within the signal's range
    EffectUnknown,    ///< the property that is to show the effect is not reported by the vehicle
    ServiceAway,      ///< the CAN service is not there
    NotServed         ///< the vehicle client serves nothing: the process is ending, or its log tells why
};

struct SetResult {
    SetError error = SetError::None;
    std::int32_t lowest = 0, highest = 0;  ///< the range, where the property can be set
    std::string text;                      ///< for a log: what is wrong, with names and numbers; empty when nothing is

    explicit operator bool() const { return error == SetError::None; }
};

/// How a set that is awaited has ended.
enum class SetEnd : std::int32_t {
    Reached,      ///< the effect was reported
    TimedOut,     ///< it was not, in time
    ServiceGone,  ///< the CAN service went away meanwhile
    Refused,      ///< nothing was sent, see SetOutcome::refusal
    SessionEnded  ///< the session was destroyed, or the process ends
};

struct SetOutcome {
    SetEnd end = SetEnd::Refused;
    SetResult refusal;
    PropertyState effect;  ///< the property that shows the effect, as it was at the end
    std::string text;      ///< for a log; empty when it was reached

    explicit operator bool() const { return end == SetEnd::Reached; }
};

/// Whether an effect counts that the vehicle has reported before the set, and reports still.
enum class EffectCounts : std::int32_t { OnlyAfterTheSet, WhenThereAlready };

/// The vehicle for one part of an application: any number of subscriptions with handlers of its own, what is known of
/// each property and of the CAN service, and sets whose outcome is told. Any number of sessions in a process, beside a
/// subscriber of VehicleClient; they neither see nor disturb each other.
///
/// Threads: every member may be called from any thread, also inside a handler, and waits for nobody but where it says
/// so. Handlers of a session run one at a time, in the order of reception, on the session's own thread or where its
/// executor takes them, never on the caller's stack (unless the executor does that). A handler may do everything: call
/// any member of this or of VehicleClient, end its own or another subscription, destroy its session, block, throw: what
/// it throws is logged. A slow one holds up its own session only.
///
/// Memory: what waits for a handler is bounded, see SubscribeOptions: about 110 bytes an update, so 28 KiB for a
/// queue of 256. A subscription takes about 200 bytes for each of its properties.
///
/// The end: destroying a session waits for its running handler as Subscription::end does. When the process ends (see
/// VehicleClient) no further handler is called, a running one is waited for about two seconds at most; after that sets
/// are refused and states stay as they are.
class QVN_VEHICLE_API VehicleSession {
public:
    using Handler = std::function<void(const PropertyState&)>;
    using ServiceHandler = std::function<void(const ServiceState&)>;
    using OutcomeHandler = std::function<void(const SetOutcome&)>;
    using Task = std::function<void()>;
    /// Has a task run, somewhere, soon, once: the way into an event loop. It is called on the library's threads, must
    /// not block there and may be called until the session's destructor returns; the task may be copied, may run on
    /// any thread, and does nothing when the session is gone. One that runs the task at once has the handlers on the
    /// thread that receives, where they hold up all reception.
    using Executor = std::function<void(const Task&)>;

    /// Handlers run on a thread of the session's own.
    /// @throws std::system_error when the system is short of threads or descriptors, as VehicleClient::getInstance
    VehicleSession();
    /// Handlers run where the executor has them run.
    explicit VehicleSession(Executor executor);
    ~VehicleSession();
    VehicleSession(const VehicleSession&) = delete;
    VehicleSession& operator=(const VehicleSession&) = delete;

    /// Has the handler told of these properties: each update is the state as `state` returns it. Keep what it returns:
    /// the subscription ends with it.
    /// @throws std::invalid_argument for no property, one that does not exist or that the vehicle does not report, and
    ///         for options that make no sense; with names and numbers
    QVN_VEHICLE_KEEP Subscription subscribe(const std::vector<int>& properties, Handler handler,
                                            const SubscribeOptions& options = SubscribeOptions());

    /// Has the handler told of the CAN service: its present state first, then every change.
    QVN_VEHICLE_KEEP Subscription subscribeService(ServiceHandler handler);

    /// What is known now of a property; UNKNOWN type, and no value, for an identifier that does not exist.
    PropertyState state(int property) const;
    ServiceState serviceState() const;

    /// Sends a number towards the vehicle, unless something is wrong about it. Nothing confirms a set: see setAndAwait.
    SetResult set(int property, double number);

    /// The same, and then looks for the effect: of `effect`, usually another property, CAN reports `effectNumber`
    /// (within 0.001). The result is there at last when `timeout` is over. It may be waited for inside a handler.
    /// @throws std::system_error when the system is short of threads; nothing was sent then
    std::future<SetOutcome> setAndAwait(int property, double number, int effect, double effectNumber,
                                        std::chrono::milliseconds timeout,
                                        EffectCounts counts = EffectCounts::OnlyAfterTheSet);
    /// The handler is called once, where the session's other handlers run, and not when the session is destroyed
    /// before: what it refers to must live until then.
    void setAndAwait(int property, double number, int effect, double effectNumber, std::chrono::milliseconds timeout,
                     OutcomeHandler handler, EffectCounts counts = EffectCounts::OnlyAfterTheSet);

    /// For tests: waits until the handlers of all sessions with threads of their own have returned for everything that
    /// was received before, also for what is held back until its time has come (SubscribeOptions::atMost). False when
    /// the deadline has passed; `busy`, unless null, is then the name of a property whose handler is at work. A handler
    /// that calls it is not waited for.
    static bool waitUntilIdle(std::chrono::steady_clock::time_point deadline, std::string* busy = nullptr);
    /// For tests: waits until the sessions know the CAN service as there, or as not there; at once where there is no
    /// session. False when the deadline has passed.
    static bool waitForService(bool there, std::chrono::steady_clock::time_point deadline);

private:
    void awaitEffect(int property, double number, int effect, double effectNumber, std::chrono::milliseconds timeout,
                     EffectCounts counts, const OutcomeHandler& finish);

    std::shared_ptr<session::Session> mSession;
};

}  // namespace vehicle
}  // namespace platform
}  // namespace qvn

#endif  // VEHICLE_VEHICLE_SESSION_H
