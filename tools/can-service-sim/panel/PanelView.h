#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "can-service-sim/Player.h"
#include "desk/PollUntil.h"

namespace qvn::tools {

/// The vehicle as pages are told of it, as JSON. Signals and messages go by their places in vehicle().
///
///     vehicle()                what stays
///       version, service, started (ms since 1970, of t = 0), trace (whether there is one)
///       signals: [{name, message, description, unit, kind, step, most, range, values}]    messages: [name]
///     everything(), changes()  what changes: all of it; what is new since the last changes()
///       t          seconds since the start; every time below is of this clock
///       values     [[signal, value, time]]; the value is null when bytes are missing, there is no time when nobody
///       sent it history    [[signal, [values of the last minute, one a second]]], of signals that changed messages
///       [[message, whether it timed out]] reverse, service, trace {position, length, speed, paused}, clients [{id,
///       since}] log        events of the simulator's journal, each with a number n
///
/// All members are called in the event loop.
class PanelView {
public:
    using Json = nlohmann::ordered_json;

    PanelView(const Player& player, std::string serviceName);

    Json vehicle() const;
    Json everything();
    Json changes();

    /// Keeps an event of the journal.
    void note(const Json& event);
    /// Keeps the present values for the history; once a second.
    void sample();

private:
    /// What was told last.
    struct Told {
        std::vector<std::optional<Clock::time_point>> values;
        std::vector<bool> timedOut;
        Json vehicleState;
        std::size_t logged = 0;
    };

    double elapsed(Clock::time_point time) const;
    void addValues(Json& state, bool all);
    void addMessages(Json& state, bool all);
    void addVehicleState(Json& state, bool all);
    void addHistory(Json& state) const;
    Json log(std::size_t since) const;

    const Player& player_;
    const std::string serviceName_;
    const Clock::time_point start_ = Clock::now();
    const std::chrono::system_clock::time_point started_ = std::chrono::system_clock::now();
    Told told_;
    std::vector<std::deque<Json>> history_;  // by signal
    std::deque<Json> log_;
    std::size_t logged_ = 0;
};

}  // namespace qvn::tools
