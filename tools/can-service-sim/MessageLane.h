#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "can-service-sim/Faults.h"
#include "can-service-sim/MessageSupervisor.h"
#include "can-service-sim/VehicleTime.h"
#include "can-service-sim/trace/TraceEvents.h"

namespace qvn::tools {

/// The way of one CAN message's signals from the vehicle to the clients: their cycles and courses, values that are
/// late, and the message's supervision. No message depends on another one, so each can be played by itself. Whoever
/// calls with a time has run what was due before.
class MessageLane {
public:
    /// Takes what comes out.
    class Output {
    public:
        virtual ~Output() = default;
        /// A course has come to a new value.
        virtual void onGiven(std::uint32_t signal, const std::string& raw) = 0;
        /// A value has arrived.
        virtual void onArrived(std::uint32_t signal, const std::string& raw) = 0;
        /// The message's supervision has found a time-out, or the end of one.
        virtual void onStatus(std::uint32_t message, bool timedOut) = 0;
    };

    /// @param message none for a signal that belongs to none
    MessageLane(std::optional<std::uint32_t> message, const Faults& faults, Output& output)
        : mMessage(message), mFaults(faults), mOutput(output) {}

    /// A new value, and perhaps a cycle of it. A cycle that runs already goes on with the value.
    void put(const SignalEvent& event, VehicleTime now);
    void start(const GenerateEvent& event, VehicleTime now);
    void stop(std::uint32_t signal) { mCycles.erase(signal); }
    void setByHand(bool timedOut) { mSupervisor.setByHand(timedOut); }
    /// A value is on its way; with a period it is one of a cycle.
    void receive(std::uint32_t signal, const std::string& raw, VehicleTime now, double period = 0.0);
    /// The message was received, whatever is in it; with a period it is watched from now on.
    void receiveMessage(VehicleTime now, double period);

    /// When something happens by itself.
    std::optional<VehicleTime> next() const;
    /// Lets that happen.
    void runNext();
    /// Lets everything happen that is due before that time, of which only the end matters: repetitions that change
    /// nothing are passed over.
    void skipTo(VehicleTime time);

private:
    struct RunningCycle {
        std::string raw;
        double period;  // seconds
        VehicleTime begin;
        std::optional<std::uint64_t> last;           // tick
        std::shared_ptr<const Generator> generator;  // gives `raw` anew each time
        std::uint64_t tick = 0;                      // the next one

        VehicleTime timeOf(std::uint64_t tickNumber) const;
        VehicleTime next() const { return timeOf(tick); }
        void skipTo(VehicleTime time);
    };
    struct LateValue {
        VehicleTime due;
        std::string raw;
        double period;
    };
    using Cycles = std::map<std::uint32_t, RunningCycle>;
    using LateValues = std::map<std::uint32_t, std::deque<LateValue>>;

    Cycles::iterator nextCycle();
    LateValues::iterator nextLate();
    void begin(std::uint32_t signal, RunningCycle cycle);
    void tick(Cycles::iterator found);
    void arrive(std::uint32_t signal, const std::string& raw, VehicleTime now, double period);
    bool isLate() const;

    std::optional<std::uint32_t> mMessage;
    const Faults& mFaults;
    Output& mOutput;
    MessageSupervisor mSupervisor;
    Cycles mCycles;
    LateValues mLate;  // in order, by signal
};

}  // namespace qvn::tools
