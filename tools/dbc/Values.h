#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "dbc/Database.h"

namespace qvn::dbc {

/// The bits of a signal as an unsigned number. Nothing when the payload is too short for it.
std::optional<std::uint64_t> rawValue(const Signal& signal, std::string_view payload);

/// The value in the signal's unit. Nothing when the payload is too short for it.
std::optional<double> physicalValue(const Signal& signal, std::string_view payload);

/// The value in the signal's unit of a raw one.
double toPhysical(const Signal& signal, std::uint64_t raw);

/// Whether a signal of the message is in this frame: always, unless it is multiplexed.
bool isPresent(const Message& message, const Signal& signal, std::string_view payload);

}  // namespace qvn::dbc
