#pragma once

#include <optional>
#include <string>
#include <vector>

#include "desk/ExitCode.h"
#include "desk/Output.h"
#include "desk/StopSignals.h"

namespace qvn::tools {

/// The commands return an ExitCode and throw BadInput for what the user got wrong.

struct ListOptions {
    bool json = false;
};

int listCommand(const ListOptions& options, Output& output);

struct GetOptions {
    std::vector<std::string> properties;
    double timeout = 2.0;  ///< seconds to wait for the first values
    bool json = false;
};

int getCommand(const GetOptions& options, const StopSignals& stop, Output& output);

struct WatchOptions {
    std::vector<std::string> properties;  ///< none: all that are received
    std::optional<double> duration;       ///< seconds
    std::optional<long> count;            ///< changes
    bool json = false;
};

int watchCommand(const WatchOptions& options, const StopSignals& stop, Output& output);

struct SetOptions {
    std::string property;
    std::string value;
    std::string waitFor;   ///< PROPERTY=VALUE, or empty
    double timeout = 2.0;  ///< seconds for the service to be there, and again for the wait
};

int setCommand(const SetOptions& options, const StopSignals& stop);

}  // namespace qvn::tools
