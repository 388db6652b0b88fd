#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "can-service-sim/Faults.h"
#include "can-service-sim/MessageLane.h"
#include "can-service-sim/VehicleTime.h"
#include "can-service-sim/can/CanDecoder.h"
#include "can-service-sim/trace/TraceEvents.h"

namespace qvn::tools {

/// What a trace's actions do to the vehicle, and what goes on in it by itself from then on. It knows no clock.
class Vehicle : private MessageLane::Output {
public:
    /// Is told what happens.
    class Observer {
    public:
        virtual ~Observer() = default;
        // What a trace or a person says:
        virtual void onGiven(std::uint32_t signal, const std::string& raw) = 0;
        virtual void onStop(std::uint32_t signal) = 0;
        virtual void onFault(const FaultEvent& fault) = 0;
        /// Something of a frame cannot be taken.
        virtual void onComplaint(const std::string& text) = 0;
        // What comes of it, which is for clients:
        virtual void onValue(std::uint32_t signal, const std::string& raw) = 0;
        /// The signal is as if it had never been sent.
        virtual void onNoValue(std::uint32_t signal) = 0;
        virtual void onStatus(std::uint32_t message, bool timedOut) = 0;
        virtual void onReverse(bool engaged) = 0;
        virtual void onService(bool up) = 0;
    };

    /// The service is down at first.
    /// @param initialValues every signal has the value zero from the start
    /// @param decoder of frames; null when there are none
    Vehicle(Observer& observer, bool initialValues, CanDecoder* decoder);

    /// Lets an action happen at a time up to which everything has run.
    void apply(const TraceAction& action, VehicleTime now);

    /// When something happens by itself.
    std::optional<VehicleTime> next() const;
    /// Lets that happen.
    void runNext();

    /// Plays from the beginning up to now what `play` applies, and tells only in what it then differs from before.
    /// Whatever goes on, and whatever is wrong, ends; of the rest, what `trace` is about is as it was before all.
    void playSilently(const std::vector<TraceEvent>& trace, VehicleTime now, const std::function<void()>& play);

    const std::map<std::uint32_t, std::string>& values() const { return mState.values; }
    const Faults& faults() const { return mFaults; }
    /// Whether the reverse line was engaged or released last; nothing when it was not moved.
    std::optional<bool> reverse() const { return mState.reverse; }

private:
    struct State {
        std::map<std::uint32_t, std::string> values;  // as clients see them
        std::set<std::uint32_t> timedOut;
        std::optional<bool> reverse;
        bool serviceUp = false;
    };
    struct Lane {
        MessageLane lane;
        std::optional<VehicleTime> next;  // as in mNext
    };

    void onGiven(std::uint32_t signal, const std::string& raw) override;
    void onArrived(std::uint32_t signal, const std::string& raw) override;
    void onStatus(std::uint32_t message, bool timedOut) override;

    static std::optional<std::uint32_t> messageOf(std::uint32_t code);
    template <class Action>
    void enter(std::uint32_t code, VehicleTime now, const Action& action);
    void schedule(std::uint32_t key, Lane& lane);
    void happen(const SignalEvent& event, VehicleTime now);
    void happen(const GenerateEvent& event, VehicleTime now);
    void happen(const StopEvent& event, VehicleTime now);
    void happen(const MessageEvent& event, VehicleTime now);
    void happen(const FaultEvent& event, VehicleTime now);
    void happen(const ReverseEvent& event, VehicleTime now);
    void happen(const ServiceEvent& event, VehicleTime now);
    void happen(const FrameEvent& event, VehicleTime now);
    void startAfresh(const std::vector<TraceEvent>& trace);
    // What an event of the trace is about is as it was before all; what has no value has ended already.
    void reset(const SignalEvent& event) { forget(event.code); }
    void reset(const GenerateEvent& event) { forget(event.code); }
    void reset(const StopEvent&) {}
    void reset(const MessageEvent&) {}
    void reset(const FaultEvent&) {}
    void reset(const ReverseEvent&) { mState.reverse = mState.reverse ? std::optional(false) : std::nullopt; }
    void reset(const ServiceEvent&) { mState.serviceUp = true; }
    void reset(const FrameEvent& event);
    void forget(std::uint32_t signal);
    void tellDifference(const State& told);

    Observer& mObserver;
    CanDecoder* mDecoder;
    std::map<std::uint32_t, std::string> mInitialValues;
    State mState;
    Faults mFaults;
    std::map<std::uint32_t, Lane> mLanes;                   // by message; by signal where it has none
    std::set<std::pair<VehicleTime, std::uint32_t>> mNext;  // of each lane in which something goes on
    bool mSilent = false;
};

}  // namespace qvn::tools
