#pragma once

#include <sys/un.h>

#include <string>
#include <system_error>

#include "host/UniqueFd.h"

namespace qvn::host {

/// The path of the socket under which a service of the bus can be reached.
///
/// @param path   receives the path; may be null
/// @param error  receives one sentence for the user on failure, naming the path and the remedy; may be null
/// @return false when the path is longer than the system allows for a socket
bool serviceSocketPath(const std::string& service, std::string* path, std::string* error);

/// The address of a socket file. Fails when the path is too long for one.
std::error_code socketAddress(const std::string& path, sockaddr_un* address);

/// Connects to a service without waiting. Empty, with `error` set, on failure.
UniqueFd connectToService(const std::string& service, std::error_code& error);

/// The process that offers a service at this moment; 0 when there is none, or when it cannot be found out.
///
/// It is asked by a connection that ends at once. It may offer the service and not serve it, when it is stopped for
/// instance.
int serviceHolder(const std::string& service);

}  // namespace qvn::host
