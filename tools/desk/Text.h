#pragma once

#include <string>
#include <string_view>

namespace qvn::tools {

/// The text in single quotes, shortened and with control characters replaced, fit for an error message.
std::string quoted(std::string_view text);

/// Two hexadecimal digits for each byte.
std::string hexBytes(std::string_view raw);

/// With small letters in place of capital ones, of ASCII.
std::string lowerCase(std::string_view text);

/// The line without the byte-order mark that some editors write at the start of a file.
std::string_view withoutByteOrderMark(std::string_view line);

}  // namespace qvn::tools
