#include "host/RuntimeDir.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "Path.h"

namespace qvn::host {
namespace {

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

bool fail(std::string* error, const std::string& text) {
    if (error != nullptr) {
        *error = text;
    }
    return false;
}

bool makeDirectory(const std::string& path) {
    if (::mkdir(path.c_str(), 0700) == 0 || errno == EEXIST) {
        return true;
    }
    if (errno != ENOENT || parentOf(path) == path || !makeDirectory(parentOf(path))) {
        return false;
    }
    return ::mkdir(path.c_str(), 0700) == 0 || errno == EEXIST;
}

/// Makes the directory or accepts the one that is there: a real one, of this user, open to him at least.
bool ensureOwnDirectory(const std::string& path, struct stat* status, std::string* error) {
    if (!makeDirectory(path)) {
        return fail(error, "cannot make the directory " + path + ": " + std::strerror(errno) +
                               "; set QVN_HOST_DIR to a folder that you can write to");
    }
    if (::lstat(path.c_str(), status) != 0) {
        return fail(error, "cannot use the directory " + path + ": " + std::strerror(errno));
    }
    if (!S_ISDIR(status->st_mode)) {
        return fail(error, path + " is not a directory (symbolic links are refused); remove it or set QVN_HOST_DIR");
    }
    if (status->st_uid != ::geteuid()) {
        return fail(error, "the directory " + path + " belongs to another user; set QVN_HOST_DIR to a folder of yours");
    }
    if ((status->st_mode & S_IRWXU) != S_IRWXU) {
        return fail(error, "the directory " + path + " is closed to its owner; run: chmod 700 " + path);
    }
    return true;
}

}  // namespace

std::string runtimeDir() {
    std::string path = environment("QVN_HOST_DIR");
    if (path.empty() && !environment("XDG_RUNTIME_DIR").empty()) {
        path = environment("XDG_RUNTIME_DIR") + "/qvn";
    }
    if (path.empty()) {
        path = "/tmp/qvn-" + std::to_string(::geteuid());
    }
    while (path.size() > 1 && path.back() == '/') {
        path.pop_back();
    }
    return path;
}

bool ensureRuntimeDir(std::string* error) {
    const std::string path = runtimeDir();
    struct stat status = {};
    if (!ensureOwnDirectory(path, &status, error)) {
        return false;
    }
    if ((status.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
        return fail(error, "the directory " + path + " is open to other users; run: chmod 700 " + path);
    }
    return true;
}

bool ensureRuntimeSubdir(const std::string& name, std::string* error) {
    struct stat status = {};
    return ensureRuntimeDir(error) && ensureOwnDirectory(runtimeDir() + "/" + name, &status, error);
}

std::string gpioLinePath(int line) {
    return runtimeDir() + "/" + kGpioFolder + "/" + std::to_string(line);
}

}  // namespace qvn::host
