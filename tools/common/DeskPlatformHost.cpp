#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>

#include "common/DeskPlatform.h"
#include "host/RuntimeDir.h"

namespace qvn::tools {
namespace {

constexpr const char* kReverseLine = "87";

constexpr std::size_t kLongestSocketPath = sizeof(sockaddr_un::sun_path) - 1;

std::string socketPath(const std::string& service) {
    return host::runtimeDir() + "/" + service + ".sock";
}

/// The process whose socket listens under the name of a service; 0 when there is none.
pid_t serviceHolder(const std::string& name) {
    const std::string path = socketPath(name);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() > kLongestSocketPath) {
        return 0;
    }
    path.copy(address.sun_path, path.size());
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    ucred peer{};
    socklen_t size = sizeof peer;
    const bool known = connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
                       getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0;
    close(fd);
    return known ? peer.pid : 0;
}

}  // namespace

bool prepareDesk(const std::string& service, std::string* error) {
    const std::string path = socketPath(service);
    if (path.size() > kLongestSocketPath) {
        *error = "the socket path " + path + " is longer than " + std::to_string(kLongestSocketPath) +
                 " bytes; set QVN_HOST_DIR to a shorter folder";
        return false;
    }
    return host::ensureRuntimeDir(error);
}

bool offersService(const std::string& name, std::string* error) {
    const pid_t holder = serviceHolder(name);
    if (holder == getpid()) {
        return true;
    }
    *error = "service '" + name + "' ";
    *error += holder != 0 ? "is already running (process " + std::to_string(holder) + ")"
                          : "cannot be offered here; the log says why";
    return false;
}

LineWrite writeReverseLine(bool engaged, std::string* error) {
    if (!host::ensureRuntimeSubdir("gpio", error)) {
        return LineWrite::Failed;
    }
    const std::string path = host::runtimeDir() + "/gpio/" + kReverseLine;
    const std::string draft = path + "." + std::to_string(getpid()) + ".new";
    std::ofstream file(draft);
    file << (engaged ? "0\n" : "1\n");
    file.close();
    if (!file || std::rename(draft.c_str(), path.c_str()) != 0) {
        *error = "cannot write the reverse line " + path + ": " + std::strerror(errno);
        std::remove(draft.c_str());
        return LineWrite::Failed;
    }
    return LineWrite::Done;
}

}  // namespace qvn::tools
