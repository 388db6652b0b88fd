#include "can-service-sim/console/LineReader.h"

#include <unistd.h>

#include <cerrno>

namespace qvn::tools {

bool LineReader::read(const std::function<void(const std::string&)>& onLine) {
    char buffer[4096];
    const ssize_t count = ::read(mFd, buffer, sizeof buffer);
    if (count < 0) {
        return errno == EINTR || errno == EAGAIN;
    }
    mPending.append(buffer, static_cast<std::size_t>(count));
    std::size_t begin = 0;
    for (std::size_t end = 0; (end = mPending.find('\n', begin)) != std::string::npos; begin = end + 1) {
        ++mLineNumber;
        onLine(mPending.substr(begin, end - begin));
    }
    mPending.erase(0, begin);
    if (count > 0) {
        return true;
    }
    if (!mPending.empty()) {
        ++mLineNumber;
        onLine(mPending);
        mPending.clear();
    }
    return false;
}

}  // namespace qvn::tools
