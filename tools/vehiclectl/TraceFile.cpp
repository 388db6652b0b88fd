#include "vehiclectl/TraceFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "desk/BadInput.h"
#include "desk/WholeLines.h"

namespace qvn::tools {
namespace {

constexpr mode_t kMode = 0666;  // as the umask has it

int openFile(const std::string& path, int flags) {
    const int file = open(path.c_str(), O_WRONLY | O_CLOEXEC | flags, kMode);
    if (file < 0) {
        throw BadInput(errno == EEXIST ? path + " is there already; --force replaces it"
                                       : "cannot write " + path + ": " + std::strerror(errno));
    }
    return file;
}

/// Behind all links: these stay when a file is replaced.
std::string linkedPath(const std::string& path) {
    char resolved[PATH_MAX];
    return realpath(path.c_str(), resolved) ? resolved : path;
}

/// A new file beside that of this path, with these rights; `made` is its name.
int openBeside(const std::string& path, mode_t mode, std::string& made) {
    made = path + ".XXXXXX";
    const int file = mkostemp(&made[0], O_CLOEXEC);
    if (file < 0) {
        throw BadInput("cannot write beside " + path + ": " + std::strerror(errno));
    }
    fchmod(file, mode);
    return file;
}

int openTrace(const std::string& path, bool replace, std::string& made) {
    struct stat there = {};
    if (!replace || stat(path.c_str(), &there) != 0) {
        const int file = openFile(path, O_CREAT | O_EXCL);
        made = path;
        return file;
    }
    if (S_ISREG(there.st_mode)) {
        return openBeside(linkedPath(path), there.st_mode & ALLPERMS, made);
    }
    if (!S_ISCHR(there.st_mode)) {
        throw BadInput(path + " is not a file; '-' writes to standard output");
    }
    return openFile(path, 0);
}

}  // namespace

TraceFile::TraceFile(const std::string& path, bool replace, const std::string& firstLines)
    : mPath(path), mFile(openTrace(path, replace, mMade), "open") {
    try {
        append(firstLines);
        const bool replaces = !mMade.empty() && mMade != path;
        if (replaces && std::rename(mMade.c_str(), linkedPath(path).c_str()) != 0) {
            throw BadInput("cannot replace " + path + ": " + std::strerror(errno));
        }
    } catch (const std::exception&) {
        unlink(mMade.c_str());
        throw;
    }
}

void TraceFile::append(const std::string& lines) {
    if (const int error = writeWholeLines(mFile.get(), lines)) {
        throw std::runtime_error("cannot write " + mPath + ": " + std::strerror(error) + "; it ends before this");
    }
    mBytes += lines.size();
}

}  // namespace qvn::tools
