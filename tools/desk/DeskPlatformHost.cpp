#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>

#include "desk/DeskPlatform.h"
#include "host/RuntimeDir.h"
#include "host/ServiceSocket.h"
#include "ipc_common_soc/ReverseLine.h"

namespace qvn::tools {

bool prepareDesk(const std::string& service, std::string* error) {
    std::string path;
    return host::serviceSocketPath(service, &path, error) && host::ensureRuntimeDir(error);
}

bool offersService(const std::string& name, std::string* error) {
    const int holder = host::serviceHolder(name);
    if (holder == getpid()) {
        return true;
    }
    *error = "service '" + name + "' ";
    *error += holder != 0 ? "is already running (process " + std::to_string(holder) + ")"
                          : "cannot be offered here; the log says why";
    return false;
}

LineWrite writeReverseLine(bool engaged, std::string* error) {
    if (!host::ensureRuntimeSubdir(host::kGpioFolder, error)) {
        return LineWrite::Failed;
    }
    const std::string path = host::gpioLinePath(wire::kReverseLine);
    const std::string draft = path + "." + std::to_string(getpid()) + ".new";
    std::ofstream file(draft);
    file << (engaged ? wire::kReverseEngaged : wire::kReverseReleased) << '\n';
    file.close();
    if (!file || std::rename(draft.c_str(), path.c_str()) != 0) {
        *error = "cannot write the reverse line " + path + ": " + std::strerror(errno);
        std::remove(draft.c_str());
        return LineWrite::Failed;
    }
    return LineWrite::Done;
}

}  // namespace qvn::tools
