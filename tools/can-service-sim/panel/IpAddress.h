#pragma once

#include <string>

namespace qvn::tools {

/// Whether this is an IP address, of version 4 or 6.
bool isAddress(const std::string& text);
/// Whether only this machine reaches what listens at the address.
bool isLoopback(const std::string& address);
/// The address as a part of a URL.
std::string urlHost(const std::string& address);

}  // namespace qvn::tools
