#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "can-service-sim/AnswerRules.h"
#include "can-service-sim/CanDecoder.h"
#include "can-service-sim/CanService.h"
#include "can-service-sim/EventLoop.h"
#include "can-service-sim/Faults.h"
#include "can-service-sim/Journal.h"
#include "can-service-sim/MessageSupervisor.h"
#include "can-service-sim/TraceReader.h"

namespace qvn::tools {

/// Lets events happen: those of a trace at their time, those of standard input, and the answers to clients' sets. After
/// its construction everything runs in the event loop.
class Player {
public:
    struct Options {
        std::string serviceName;
        double speed = 1.0;  ///< how many times faster than its times a trace plays
        bool loop = false;
        bool exitAtEnd = false;
        bool initialValues = true;  ///< every signal has the value zero from the start
        AnswerRules rules;
        CanDecoder* decoder = nullptr;  ///< of the trace's frames, if it has any
    };

    Player(EventLoop& loop, const Journal& journal, Options options);

    /// Starts a trace now, and the service with it unless the trace begins with the service down.
    /// @return whether the service could be offered
    bool start(std::vector<TraceEvent> trace);

    /// Lets an event happen at its time, counted from start(), or now when it has none or its time has passed.
    void schedule(const TraceEvent& event);

    /// Gives clients what a frame carries, now.
    void receive(const CanFrame& frame);

    /// The time from start() at which the last scheduled event is over.
    Clock::time_point endOfScheduled() const { return endOfScheduled_; }

    /// Holds the trace; what comes in otherwise goes on.
    void pause();
    void resume();
    /// Plays on at that many times the trace's own speed; cycles follow with their next value.
    void setSpeed(double speed);
    /// Goes to that many seconds of the trace, into the state to which the events before lead. What was given by other
    /// means stays as it is, but for cycles and courses, faults and time-outs, which end.
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
    const CanService& service() const { return service_; }
    /// What goes wrong between the vehicle and them.
    const Faults& faults() const { return faults_; }
    /// Whether the reverse line was engaged or released last; nothing when it was not moved.
    std::optional<bool> reverse() const { return reverse_; }

    /// Whether something failed while playing.
    bool failed() const { return failed_; }

private:
    struct RunningCycle {
        std::string raw;
        double period = 0.0;  ///< as in the trace, before the speed is applied
        Clock::time_point end;
        EventLoop::Timer next;
        std::shared_ptr<const Generator> generator;  ///< gives `raw` anew each time
        double elapsed = 0.0;                        ///< of the generator, in the trace's seconds
    };

    double positionInTrace() const;
    void playTrace(Clock::time_point start);
    void playNextOfTrace();
    void waitInTrace(Clock::time_point time, EventLoop::Task task);
    void apply(const TraceAction& action);
    void put(const SignalEvent& event);
    void receive(std::uint32_t code, const std::string& raw, double period);
    bool advance(std::uint32_t code, RunningCycle& cycle);
    void applyFault(const FaultEvent& fault);
    void send(std::uint32_t code, std::optional<std::uint32_t> message, const std::string& raw, double period);
    void startGenerator(const GenerateEvent& event);
    void supervise(std::uint32_t message, double period);
    void startCycle(std::uint32_t code, const std::string& raw, const Cycle& cycle);
    void endCycle(std::uint32_t code);
    void startAfresh();
    void tick(std::uint32_t code, Clock::time_point time);
    void moveReverseLine(bool engaged);
    bool moveService(bool up);
    void report(std::uint32_t message, bool timedOut);
    void superviseLater();
    void onSet(std::uint32_t code, const std::string& raw);
    void answer(std::size_t set, const AnswerRule& rule, std::int32_t value);
    void fail(const std::string& text);
    Clock::duration scaled(double seconds) const;

    EventLoop& loop_;
    const Journal& journal_;
    Options options_;
    CanService service_;
    MessageSupervisor supervisor_;
    Faults faults_;
    std::map<std::uint32_t, Clock::time_point> lateUntil_;  // by signal: the last delayed value is sent then
    std::size_t delayed_ = 0;                               // values that are late by an older number are not sent
    std::vector<TraceEvent> trace_;
    std::size_t nextOfTrace_ = 0;
    double lengthOfTrace_ = 0.0;  // seconds
    Clock::time_point traceStart_;
    Clock::time_point endOfTrace_;
    std::optional<EventLoop::Timer> traceTimer_;
    std::optional<double> pausedAt_;  // seconds of the trace
    std::map<std::uint32_t, RunningCycle> cycles_;
    Clock::time_point start_;
    Clock::time_point endOfScheduled_;
    std::optional<EventLoop::Timer> supervision_;
    std::optional<bool> reverse_;
    std::size_t sets_ = 0;
    bool toldOfHardware_ = false;
    bool failed_ = false;
};

}  // namespace qvn::tools
