#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "can-service-sim/Player.h"
#include "can-service-sim/panel/EventLog.h"
#include "can-service-sim/panel/SampleHistory.h"
#include "desk/Json.h"
#include "desk/PollUntil.h"

namespace qvn::tools {

/// The vehicle as pages are told of it, as JSON. Signals and messages go by their places in vehicle().
///
/// vehicle(), what stays:
///  - version, service (its name), trace (whether there is one)
///  - started: ms since 1970, of t = 0
///  - messages: [name]
///  - signals: [{name, message, description, unit, kind, step, most, range, values}]
///
/// everything() and changes(), what changes, or has changed since the last changes():
///  - t: seconds since the start; every other time is of this clock
///  - values: [[signal, value, time]]; null when bytes are missing, no time when nobody has sent it
///  - history: [[signal, values of the last minute, one a second]], of signals that changed meanwhile, and samples, how
///    many values; in everything() only
///  - messages: [[message, whether it timed out]]
///  - service, reverse, trace: {position, length, speed, paused}, clients: [{id, since}],
///    faults: {signal or message: what is wrong with it}
///  - log: events of the simulator's journal, each with a number n by which they are ordered
///
/// All members are called in the event loop.
class PanelView {
public:
    PanelView(const Player& player, std::string serviceName);

    Json vehicle() const;
    Json everything();
    Json changes();

    /// Keeps an event of the journal.
    void note(const Json& event);
    /// Keeps the present values for the history; once a second.
    void sample();

private:
    double elapsed(Clock::time_point time) const;
    void addValues(Json& state, bool all);
    void addMessages(Json& state, bool all);
    void addVehicleState(Json& state, bool all);

    const Player& mPlayer;
    const std::string mServiceName;
    const Clock::time_point mStart = Clock::now();
    const std::chrono::system_clock::time_point mStarted = std::chrono::system_clock::now();
    // What changes() told last.
    std::vector<std::optional<Clock::time_point>> mToldValues;
    std::vector<bool> mToldTimeOuts;
    Json mToldState;
    std::size_t mToldEvents = 0;
    SampleHistory mHistory;
    EventLog mLog;
};

}  // namespace qvn::tools
