#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace qvn::tools {

/// Exit codes of both tools.
enum ExitCode { kDone = 0, kFailed = 1, kUsage = 2, kTimedOut = 3 };

/// Something that the user wrote is wrong; what() is one sentence for the user. Ends a tool with kUsage.
class BadInput : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The text in single quotes, shortened and with control characters replaced, fit for an error message.
std::string quoted(std::string_view text);

/// Reads a decimal or 0x-hexadecimal number; `what` names it in the error.
/// @throws BadInput unless the whole text is one finite number
double parseNumber(std::string_view text, std::string_view what);

/// The line without the byte-order mark that some editors write at the start of a file.
std::string_view withoutByteOrderMark(std::string_view line);

/// Formats a number the way people write it: no exponent or trailing zeros where avoidable.
std::string formatNumber(double number);

}  // namespace qvn::tools
