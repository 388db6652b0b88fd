#include "can-service-sim/console/LineReader.h"

#include <unistd.h>

#include <cerrno>

namespace qvn::tools {

bool LineReader::read(const std::function<void(const std::string&)>& onLine) {
    char buffer[4096];
    const ssize_t count = ::read(fd_, buffer, sizeof buffer);
    if (count < 0) {
        return errno == EINTR || errno == EAGAIN;
    }
    pending_.append(buffer, static_cast<std::size_t>(count));
    std::size_t begin = 0;
    for (std::size_t end = 0; (end = pending_.find('\n', begin)) != std::string::npos; begin = end + 1) {
        ++lineNumber_;
        onLine(pending_.substr(begin, end - begin));
    }
    pending_.erase(0, begin);
    if (count > 0) {
        return true;
    }
    if (!pending_.empty()) {
        ++lineNumber_;
        onLine(pending_);
        pending_.clear();
    }
    return false;
}

}  // namespace qvn::tools
