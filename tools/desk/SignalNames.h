#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qvn::tools {

/// What a name is expected to stand for.
enum class NameKind {
    Received,  ///< a signal that the CAN service broadcasts, QVN_GET_<MSG>_<Signal>
    Message,   ///< a whole CAN message, QVN_GET_<MSG>
    Settable   ///< a signal that a client may set, QVN_SET_<MSG>_<Signal>
};

/// The code id of a name with or without its QVN_GET_ or QVN_SET_ prefix, or of a hexadecimal code id (0x01384CD0);
/// nothing for a name that is not of this kind.
std::optional<std::uint32_t> lookUpCode(NameKind kind, std::string_view name);

/// The same.
/// @throws BadInput for a name that is not of this kind, with the closest names that are
std::uint32_t findCode(NameKind kind, std::string_view name);

/// The name of a code id without its prefix ("ESP_FD2_VehSpd"), or its hexadecimal form when it has none.
std::string signalName(std::uint32_t code);

/// The name without the QVN_GET_ or QVN_SET_ that it may begin with.
std::string_view withoutPrefix(std::string_view name);

/// The names of all codes of a kind, without prefix.
std::vector<std::string> knownNames(NameKind kind);

/// The code id of the message that carries a received signal. It cannot be told from the value of the code id.
std::optional<std::uint32_t> messageOf(std::uint32_t signalCode);

}  // namespace qvn::tools
