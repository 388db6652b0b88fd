#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>

#include "dbc/Database.h"
#include "dbc/Syntax.h"

namespace qvn::dbc {

/// Under this id editors keep the signals that belong to no message.
constexpr std::uint32_t kNoMessage = 0xC0000000U;

/// Whether a signal of this name matters: what is wrong about it is an error, what is wrong about another is left out.
using IsWanted = std::function<bool(std::string_view)>;

/// Reads a message after its keyword BO_: what is multiplexed is resolved as far as the message itself tells.
/// @param fileId the id as it stands in the file, by which other sections refer to the message
/// @return nothing when the message as a whole is left out
std::optional<Message> readMessage(Syntax& syntax, const IsWanted& isWanted, std::uint32_t* fileId);

/// The place of a signal in the message.
std::optional<std::size_t> findSignal(const Message& message, std::string_view name);

}  // namespace qvn::dbc
