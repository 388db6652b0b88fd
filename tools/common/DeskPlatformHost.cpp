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

}  // namespace

bool prepareDesk(std::string* error) {
    return host::ensureRuntimeDir(error);
}

bool writeReverseLine(bool engaged, std::string* error) {
    if (!host::ensureRuntimeSubdir("gpio", error)) {
        return false;
    }
    const std::string path = host::runtimeDir() + "/gpio/" + kReverseLine;
    const std::string draft = path + "." + std::to_string(getpid()) + ".new";
    std::ofstream file(draft);
    file << (engaged ? "0\n" : "1\n");
    file.close();
    if (!file || std::rename(draft.c_str(), path.c_str()) != 0) {
        *error = "cannot write the reverse line " + path + ": " + std::strerror(errno);
        std::remove(draft.c_str());
        return false;
    }
    return true;
}

}  // namespace qvn::tools
