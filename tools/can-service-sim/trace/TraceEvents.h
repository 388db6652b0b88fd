#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "can-service-sim/can/CanFrame.h"

namespace qvn::tools {

class Generator;

/// Repetition of a signal's frame; seconds.
struct Cycle {
    double period = 0.0;
    std::optional<double> duration;  ///< without one the cycle goes on until it is stopped
};

/// The number of the last repetition, the first one being 0.
std::optional<std::uint64_t> lastTick(const Cycle& cycle);

/// A signal takes a value.
struct SignalEvent {
    std::uint32_t code = 0;
    std::string raw;
    std::optional<Cycle> cycle;
};

/// A signal begins a course of values.
struct GenerateEvent {
    std::uint32_t code = 0;
    std::shared_ptr<const Generator> generator;
};

/// A signal's cycle or course ends.
struct StopEvent {
    std::uint32_t code = 0;
};

/// A whole message times out or is received again.
struct MessageEvent {
    std::uint32_t code = 0;
    bool timedOut = false;
};

/// Something goes wrong on the way to the clients, or right again.
struct FaultEvent {
    enum class Kind {
        Silence,  ///< of a message: nothing of it is sent, without a word, until it is given as received
        Freeze,   ///< of a signal: it keeps its value, whatever comes
        Thaw,     ///< the latest value is sent
        Delay     ///< of a signal or message: everything of it is sent later; by 0 no more
    };

    Kind kind;
    std::uint32_t code = 0;
    double seconds = 0.0;  ///< of a delay
};

/// The reverse line moves.
struct ReverseEvent {
    bool engaged = false;
};

/// The CAN service goes on or off the bus.
struct ServiceEvent {
    bool up = false;
};

/// A frame is received from a CAN bus.
struct FrameEvent {
    CanFrame frame;
};

using TraceAction = std::variant<SignalEvent, GenerateEvent, StopEvent, MessageEvent, FaultEvent, ReverseEvent,
                                 ServiceEvent, FrameEvent>;

struct TraceEvent {
    std::optional<double> time;  ///< seconds from the start; a line on standard input may go without
    TraceAction action;
};

/// The time at which the last event of a trace is over, the duration of its cycle included; seconds.
double traceEnd(const std::vector<TraceEvent>& events);

}  // namespace qvn::tools
