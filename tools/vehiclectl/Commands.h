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

struct InfoOptions {
    std::vector<std::string> properties;
    bool json = false;
};

/// All that the tables and the notes say of properties.
int infoCommand(const InfoOptions& options, Output& output);

struct GetOptions {
    std::vector<std::string> properties;
    double timeout = 2.0;  ///< seconds to wait for the first values
    bool json = false;
};

int getCommand(const GetOptions& options, const StopSignals& stop, Output& output);

struct WatchOptions {
    std::vector<std::string> properties;  ///< names or patterns; none: all that are received
    std::optional<double> duration;       ///< seconds
    std::optional<long> count;            ///< changes
    bool exitOnLoss = false;              ///< end when the CAN service goes
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

struct RecordOptions {
    std::string file;                     ///< "-": standard output
    std::vector<std::string> properties;  ///< names or patterns; none: all that are received
    std::optional<double> duration;       ///< seconds
    std::optional<long> count;            ///< events
    bool force = false;                   ///< an existing file is replaced
};

/// Writes what comes over the bus as a trace for can-service-sim.
int recordCommand(const RecordOptions& options, const StopSignals& stop, Output& output);

struct MeasureOptions {
    std::vector<std::string> properties;  ///< none: all that are received; `status` has none
    double duration = 1.0;                ///< seconds to look
    bool json = false;
};

/// How often values come, and how evenly.
int hzCommand(const MeasureOptions& options, const StopSignals& stop, Output& output);

/// Whether the CAN service is there, and what comes from it. kTimedOut when it is not.
int statusCommand(const MeasureOptions& options, const StopSignals& stop, Output& output);

struct DoctorOptions {
    std::vector<std::string> properties;  ///< that an application subscribes
};

/// What an application needs here before it sees a value, each with its remedy. kFailed when something is missing.
int doctorCommand(const DoctorOptions& options, Output& output);

}  // namespace qvn::tools
