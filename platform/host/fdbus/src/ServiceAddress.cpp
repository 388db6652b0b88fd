#include "ServiceAddress.h"

#include <host/Log.h>
#include <host/RuntimeDir.h>
#include <host/ServiceSocket.h>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace fdb {

using qvn::host::UniqueFd;

namespace {

const char kScheme[] = "svc://";
constexpr int kBacklog = 128;

UniqueFd listenAt(const std::string& path) {
    sockaddr_un address;
    UniqueFd fd(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!fd || qvn::host::socketAddress(path, &address)) {
        return UniqueFd();
    }
    ::unlink(path.c_str());
    if (::bind(fd.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0 ||
        ::listen(fd.get(), kBacklog) != 0) {
        return UniqueFd();
    }
    return fd;
}

}  // namespace

std::string serviceName(const char* url, const std::string& fallback) {
    std::string name = fallback;
    if (url) {
        name = std::strncmp(url, kScheme, sizeof(kScheme) - 1) == 0 ? url + sizeof(kScheme) - 1 : "";
    }
    if (name.empty() || name[0] == '.' || name.find('/') != std::string::npos) {
        lgklog_print(qvn::host::kLogFatal, "fdbus: '%s' is not a service address; expected svc://NAME",
                     url ? url : fallback.c_str());
        return "";
    }
    return name;
}

ServiceSocket::~ServiceSocket() {
    if (isPublished()) {
        ::unlink(mPath.c_str());
    }
}

bool ServiceSocket::open(const std::string& service, std::string& error) {
    std::string path;
    if (!qvn::host::ensureRuntimeDir(&error) || !qvn::host::serviceSocketPath(service, &path, &error)) {
        return false;
    }
    const std::string base = qvn::host::runtimeDir() + "/" + service;
    mLock = UniqueFd(::open((base + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!mLock || ::flock(mLock.get(), LOCK_EX | LOCK_NB) != 0) {
        error = errno == EWOULDBLOCK ? "another server has this name" : base + ".lock: " + std::strerror(errno);
        return false;
    }
    const std::string temporary = base + ".new";
    UniqueFd fd = listenAt(temporary);
    struct stat status;
    if (!fd || ::stat(temporary.c_str(), &status) != 0 || ::rename(temporary.c_str(), path.c_str()) != 0) {
        error = path + ": " + std::strerror(errno);
        return false;
    }
    mFd = std::move(fd);
    mPath = path;
    mInode = status.st_ino;
    return true;
}

bool ServiceSocket::isPublished() const {
    struct stat status;
    return !mPath.empty() && ::lstat(mPath.c_str(), &status) == 0 && S_ISSOCK(status.st_mode) &&
           status.st_ino == mInode;
}

bool isSameUser(int fd, const std::string& label) {
    ucred peer = {};
    socklen_t size = sizeof(peer);
    if (::getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == ::geteuid()) {
        return true;
    }
    lgklog_print(qvn::host::kLogError, "fdbus: %s belongs to user %u and is refused", label.c_str(),
                 static_cast<unsigned>(peer.uid));
    return false;
}

}  // namespace fdb
