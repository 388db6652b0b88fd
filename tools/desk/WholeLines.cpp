#include "desk/WholeLines.h"

#include <limits.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

namespace qvn::tools {
namespace {

/// As many lines as a pipe takes at once, or a single one that is longer than that.
std::string_view firstLines(std::string_view lines) {
    if (lines.size() <= PIPE_BUF) {
        return lines;
    }
    std::size_t end = lines.rfind('\n', PIPE_BUF - 1);
    end = end == std::string_view::npos ? lines.find('\n') : end;
    return end == std::string_view::npos ? lines : lines.substr(0, end + 1);
}

/// Takes the last bytes of a file away, unless somebody has written behind them.
void takeBack(int fd, std::size_t bytes) {
    struct stat file = {};
    const off_t end = lseek(fd, 0, SEEK_CUR);
    const off_t kept = end - static_cast<off_t>(bytes);
    if (fstat(fd, &file) == 0 && S_ISREG(file.st_mode) && file.st_size == end && ftruncate(fd, kept) == 0) {
        lseek(fd, kept, SEEK_SET);
    }
}

int writeAtOnce(int fd, std::string_view lines) {
    for (std::size_t done = 0; done < lines.size();) {
        const ssize_t count = write(fd, lines.data() + done, lines.size() - done);
        if (count >= 0) {
            done += static_cast<std::size_t>(count);
        } else if (errno == EAGAIN) {
            pollfd writable{fd, POLLOUT, 0};
            poll(&writable, 1, -1);
        } else if (errno != EINTR) {
            const int error = errno;
            takeBack(fd, done - (lines.substr(0, done).rfind('\n') + 1));
            return error;
        }
    }
    return 0;
}

}  // namespace

int writeWholeLines(int fd, std::string_view lines) {
    int error = 0;
    while (error == 0 && !lines.empty()) {
        const std::string_view now = firstLines(lines);
        error = writeAtOnce(fd, now);
        lines.remove_prefix(now.size());
    }
    return error;
}

}  // namespace qvn::tools
