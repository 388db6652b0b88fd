#pragma once

#include <host/UniqueFd.h>

#include <string>
#include <utility>

namespace fdb {

/// The name in `svc://NAME`; `fallback` where there is no URL. Empty, with a log line, when it names no service.
std::string serviceName(const char* url, const std::string& fallback);

/// A service's name while it is taken: the lock that keeps other servers away, and the listening socket.
///
/// The lock is the kernel's, on the file NAME.lock: it ends with the process, however that ends. The socket is bound
/// under a temporary name and renamed when it listens, so that whoever sees NAME.sock can connect to it.
class ServiceSocket {
public:
    ~ServiceSocket();

    /// False, with the reason, when the name is taken or the runtime directory cannot be used.
    bool open(const std::string& service, std::string& error);
    /// Whether the socket's file is in its place.
    bool isPublished() const;

    /// The listening descriptor; the caller takes it over.
    qvn::host::UniqueFd takeFd() { return std::move(mFd); }

private:
    qvn::host::UniqueFd mLock;
    qvn::host::UniqueFd mFd;
    std::string mPath;
    unsigned long mInode = 0;
};

/// Whether the process at the other end has this one's user id; a log line says when not.
bool isSameUser(int fd, const std::string& label);

}  // namespace fdb
