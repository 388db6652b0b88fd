#pragma once

#include <string>

namespace qvn::host {

/// The folder in which the processes of the host platform meet: service sockets, GPIO line files, vehicle.json.
///
/// $QVN_HOST_DIR, else $XDG_RUNTIME_DIR/qvn, else /tmp/qvn-UID, without trailing slashes. The environment is read at
/// each call; an empty variable counts as unset. The folder need not exist.
std::string runtimeDir();

/// Makes the runtime folder with mode 0700, and its parents where they are missing.
///
/// A folder that exists is used only when it is a real directory of the calling user that is closed to all others:
/// whoever can write there can pose as a service.
///
/// @param error  receives one sentence for the user on failure, naming the path and the remedy; may be null
/// @return whether the folder is ready for use
bool ensureRuntimeDir(std::string* error);

/// Makes the runtime folder and a folder in it, such as "gpio". The inner one may be open to others, since the runtime
/// folder around it is closed.
bool ensureRuntimeSubdir(const std::string& name, std::string* error);

/// The folder of the GPIO lines in the runtime folder.
constexpr char kGpioFolder[] = "gpio";

/// The file of a GPIO line, `gpio/LINE` in the runtime folder: it holds 0 or 1; where there is none the line reads 1.
std::string gpioLinePath(int line);

}  // namespace qvn::host
