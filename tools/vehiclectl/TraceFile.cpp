#include "vehiclectl/TraceFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>

#include "desk/BadInput.h"

namespace qvn::tools {
namespace {

constexpr mode_t kMode = 0666;  // as the umask has it

[[noreturn]] void refuse(const std::string& path) {
    throw BadInput("cannot write " + path + ": " + std::strerror(errno));
}

/// A device or a FIFO is written to; it cannot be replaced.
bool isFile(const std::string& path) {
    struct stat status = {};
    return stat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode);
}

int openFile(const std::string& path, bool replace) {
    const int flags = replace ? O_TRUNC : O_EXCL;
    const int file = open(path.c_str(), O_WRONLY | O_CLOEXEC | O_CREAT | flags, kMode);
    if (file < 0 && errno == EEXIST) {
        throw BadInput(path + " is there already; --force replaces it");
    }
    if (file < 0) {
        refuse(path);
    }
    return file;
}

}  // namespace

TraceFile::TraceFile(const std::string& path, bool replace, const std::string& firstLines)
    : path_(path), madeAs_(replace && isFile(path) ? path + ".new" : path), file_(openFile(madeAs_, replace), "open") {
    write(firstLines);
    if (madeAs_ != path && std::rename(madeAs_.c_str(), path.c_str()) != 0) {
        refuse(path);
    }
}

void TraceFile::append(const std::string& lines) {
    write(lines);
}

void TraceFile::write(const std::string& lines) {
    std::size_t done = 0;
    while (done < lines.size()) {
        const ssize_t count = ::write(file_.get(), lines.data() + done, lines.size() - done);
        if (count < 0 && errno != EINTR) {
            const int error = errno;
            // Up to the end of its last whole line; what is no file cannot be shortened.
            const std::size_t end = lines.rfind('\n', done == 0 ? 0 : done - 1);
            const std::size_t kept = done == 0 || end == std::string::npos ? 0 : end + 1;
            [[maybe_unused]] const int shortened = ftruncate(file_.get(), static_cast<off_t>(bytes_ + kept));
            throw std::runtime_error("cannot write " + path_ + ": " + std::strerror(error) + "; it ends before this");
        }
        done += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    bytes_ += lines.size();
}

}  // namespace qvn::tools
