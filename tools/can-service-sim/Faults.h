#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "can-service-sim/trace/TraceEvents.h"
#include "desk/PollUntil.h"

namespace qvn::tools {

/// What goes wrong at present between the vehicle and its clients.
class Faults {
public:
    /// @return what the signal shows instead from now on; nothing when that does not change
    std::optional<std::string> apply(const FaultEvent& fault, const std::optional<std::string>& currentValue);

    /// A message is received again: it is silent no more.
    void endSilence(std::uint32_t message) { mPresent.erase({FaultEvent::Kind::Silence, message}); }
    bool isSilent(std::optional<std::uint32_t> message) const {
        return message && mPresent.count({FaultEvent::Kind::Silence, *message}) != 0;
    }

    /// The value that a signal shows when it is given this one.
    const std::string& shown(std::uint32_t signal, const std::string& raw);

    /// Ends all of them. Returns the latest values of frozen signals that have not been shown.
    std::map<std::uint32_t, std::string> end();

    /// What is wrong with each signal or message, in words: "frozen", "silent", "late by 0.2 s".
    std::map<std::uint32_t, std::string> describe() const;

    /// Seconds by which a signal is late, by itself or with its message.
    double delayOf(std::uint32_t signal, std::optional<std::uint32_t> message) const;

private:
    struct Fault {
        double seconds = 0.0;
        // Of a frozen signal:
        std::string shown;
        std::optional<std::string> latest;
    };

    std::optional<std::string> thaw(std::uint32_t signal);

    std::map<std::pair<FaultEvent::Kind, std::uint32_t>, Fault> mPresent;  // of each signal or message
};

}  // namespace qvn::tools
