#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "dbc/Database.h"
#include "dbc/Syntax.h"

namespace qvn::dbc {

/// Under this id editors keep the signals that belong to no message.
constexpr std::uint32_t kNoMessage = 0xC0000000U;

/// A signal as a file refers to it: the id of its message as it stands in the file, and its own name.
using SignalKey = std::pair<std::uint32_t, std::string>;

/// Something that is wrong in a file, and the signals that are not what they should be therefore.
struct Fault {
    Mistake mistake;
    std::vector<SignalKey> signals;
};

/// Reads a message after its keyword BO_: what is multiplexed is resolved as far as the message itself tells. Signals
/// that are wrong are left out.
/// @param fileId the id as it stands in the file
/// @throws Mistake for what is wrong before the first signal
Message readMessage(Syntax& syntax, std::uint32_t* fileId, std::vector<Fault>& faults);

/// The place of a signal in the message.
std::optional<std::size_t> findSignal(const Message& message, std::string_view name);

}  // namespace qvn::dbc
