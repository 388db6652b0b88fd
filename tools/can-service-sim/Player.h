#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "can-service-sim/AnswerRules.h"
#include "can-service-sim/Answers.h"
#include "can-service-sim/CanService.h"
#include "can-service-sim/EventLoop.h"
#include "can-service-sim/Faults.h"
#include "can-service-sim/Journal.h"
#include "can-service-sim/Simulation.h"
#include "can-service-sim/can/CanDecoder.h"
#include "can-service-sim/trace/TraceEvents.h"

namespace qvn::tools {

/// Runs a simulation in the event loop: what happens in it goes to the clients, the reverse line and the journal, and
/// what clients set to the answers.
class Player : private Vehicle::Observer {
public:
    struct Options {
        std::string serviceName;
        double speed = 1.0;  ///< how many times faster than its times a trace plays
        bool loop = false;
        bool exitAtEnd = false;
        std::optional<double> startAt;  ///< seconds of the trace
        bool initialValues = true;      ///< every signal has the value zero from the start
        AnswerRules rules;
        CanDecoder* decoder = nullptr;  ///< of the trace's frames, if it has any
    };

    Player(EventLoop& loop, const Journal& journal, Options options);

    /// Starts a trace now, and the service with it unless the trace begins with the service down.
    /// @return whether the service could be offered
    bool start(std::vector<TraceEvent> trace);

    /// Lets an event happen at its time, counted from start(), or now when it has none or its time has passed.
    void schedule(const TraceEvent& event);
    /// Ends the loop when the trace and what was scheduled is over.
    void endWhenDone();

    /// Gives clients what a frame carries, now.
    void receive(const CanFrame& frame);

    /// Holds the trace; what comes in otherwise goes on.
    void pause();
    void resume();
    /// Lets the trace, and everything that goes on, run that many times as fast as its times.
    void setSpeed(double speed);
    /// Goes to that many seconds of the trace; see Simulation::seek().
    void seek(double position);

    /// The trace and where it is.
    struct Progress {
        double length = 0.0;    ///< seconds of the trace; 0 without one
        double position = 0.0;  ///< seconds of the trace
        double speed = 1.0;
        bool paused = false;
    };
    Progress progress() const;

    /// What clients see.
    const CanService& service() const { return mService; }
    /// What goes wrong between the vehicle and them.
    const Faults& faults() const { return mSimulation.vehicle().faults(); }
    /// Whether the reverse line was engaged or released last; nothing when it was not moved.
    std::optional<bool> reverse() const { return mReverse; }

    /// Whether something failed while playing.
    bool failed() const { return mFailed; }

private:
    void onGiven(std::uint32_t signal, const std::string& raw) override { mJournal.signal(signal, raw); }
    void onStop(std::uint32_t signal) override { mJournal.stops(signal); }
    void onFault(const FaultEvent& fault) override { mJournal.fault(fault); }
    void onComplaint(const std::string& text) override { Journal::error(text); }
    void onValue(std::uint32_t signal, const std::string& raw) override { mService.putSignal(signal, raw); }
    void onNoValue(std::uint32_t signal) override { mService.forgetSignal(signal); }
    void onStatus(std::uint32_t message, bool timedOut) override;
    void onReverse(bool engaged) override;
    void onService(bool up) override;

    void run();
    void runLater();
    void fail(const std::string& text);

    EventLoop& mLoop;
    const Journal& mJournal;
    Options mOptions;
    CanService mService;
    Simulation mSimulation;
    Answers mAnswers;
    VehicleTime mStart{0};
    std::optional<EventLoop::Timer> mTimer;
    std::optional<bool> mReverse;
    bool mToldOfHardware = false;
    bool mFailed = false;
};

}  // namespace qvn::tools
