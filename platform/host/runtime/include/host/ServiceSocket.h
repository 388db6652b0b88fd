#pragma once

#include <sys/un.h>

#include <string>

namespace qvn {
namespace host {

/** The file name, in the runtime folder, of the socket under which a service of the bus can be reached. */
std::string serviceSocketName(const std::string& service);

/**
 * The path of that socket.
 *
 * @param path   receives the path; may be null
 * @param error  receives one sentence for the user on failure, naming the path and the remedy; may be null
 * @return false when the system takes no path as long as this one
 */
bool serviceSocketPath(const std::string& service, std::string* path, std::string* error);

/** The address of a socket file. False, with errno set, when the path is too long for one. */
bool socketAddress(const std::string& path, sockaddr_un* address);

/** Connects to a service without waiting. The descriptor, which is the caller's; -1, with errno set, on failure. */
int connectToService(const std::string& service);

/**
 * The process that offers a service at this moment.
 *
 * It is asked by a connection that ends at once. The process may offer the service without serving it, because it is
 * stopped, for instance.
 *
 * @return its identifier; 0, with errno set, when there is none (ENOENT, ECONNREFUSED) or it cannot be told
 */
int serviceHolder(const std::string& service);

}  // namespace host
}  // namespace qvn
