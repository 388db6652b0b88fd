#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
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

namespace {

std::string programOf(int process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/comm");
    std::string name;
    std::getline(file, name);
    return name.empty() ? "process " + std::to_string(process) : name + ", process " + std::to_string(process);
}

const char* originOfRuntimeDir() {
    for (const char* const variable : {"QVN_HOST_DIR", "XDG_RUNTIME_DIR"}) {
        const char* const value = std::getenv(variable);
        if (value && *value) {
            return variable;
        }
    }
    return "neither QVN_HOST_DIR nor XDG_RUNTIME_DIR is set";
}

}  // namespace

std::vector<Finding> examineDesk(const std::string& service) {
    std::vector<Finding> findings;
    std::string error, path;
    const std::string where = host::runtimeDir() + " (" + originOfRuntimeDir() + ")";
    const bool usable = host::serviceSocketPath(service, &path, &error) && host::ensureRuntimeDir(&error);
    findings.push_back(usable ? Finding{Finding::Good, "runtime directory", where, ""}
                              : Finding{Finding::Wrong, "runtime directory", where, error});
    if (!usable) {
        return findings;
    }
    const int holder = host::serviceHolder(service);
    findings.push_back(holder != 0
                           ? Finding{Finding::Good, "CAN service", "'" + service + "' is " + programOf(holder), ""}
                           : Finding{Finding::Wrong, "CAN service", "nobody offers '" + service + "' in this directory",
                                     "start can-service-sim with the same QVN_HOST_DIR"});
    return findings;
}

}  // namespace qvn::tools
