#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "desk/ExitCode.h"
#include "desk/MonotonicTime.h"
#include "desk/Number.h"
#include "vehiclectl/Commands.h"
#include "vehiclectl/CommonOptions.h"
#include "vehiclectl/PropertySelection.h"
#include "vehiclectl/PropertyTable.h"
#include "vehiclectl/UserErrors.h"
#include "vehiclectl/VehicleLoop.h"

namespace qvn::tools {
namespace {

struct GetOptions {
    std::vector<std::string> properties;
    double timeout = 2.0;  ///< seconds to wait for the first values
    bool json = false;
};

// The CAN service reports time-outs right after the values: get waits that long for them after the last value.
constexpr double kStatusSeconds = 0.005;

void print(Output& output, const PropertyRow& row, bool json) {
    if (json) {
        output.write(jsonText(row) + "\n");
    } else {
        output.print("%-36s %-12s %-9s  %s\n", row.info->name.c_str(), valueText(*row.info, row.state).c_str(),
                     statusText(row.state), ageText(row, monotonicNow(), 3).c_str());
    }
}

/// Waits until every property has a value and its status has had time to follow.
Awaited awaitValues(VehicleLoop& vehicle, const PropertyTable& table, const StopSignals& stop, double timeout) {
    Clock::time_point deadline = inSeconds(timeout);
    bool complete = false;
    Awaited what = Awaited::Updates;
    while (what == Awaited::Updates) {
        what = vehicle.await(stop, deadline);
        if (!complete && table.complete()) {
            complete = true;
            deadline = std::min(deadline, inSeconds(kStatusSeconds));
        }
    }
    return what;
}

int runGet(const GetOptions& options, const StopSignals& stop, Output& output) {
    const std::vector<const PropertyInfo*> wanted = receivedProperties(options.properties);
    PropertyTable table(wanted);
    VehicleLoop vehicle;
    if (!vehicle.open()) {
        return kFailed;
    }
    vehicle.follow(wanted, [&](const PropertyState& update) { table.apply(withoutReverseLine(update)); });
    if (awaitValues(vehicle, table, stop, options.timeout) == Awaited::Stop) {
        return kFailed;
    }
    int result = kDone;
    for (const PropertyInfo* const property : wanted) {
        const PropertyRow& row = table.of(*property);
        if (row.state.hasValue()) {
            print(output, row, options.json);
        } else {
            printError("no value of " + property->name + " within " + formatNumber(options.timeout) + " s; " +
                       (vehicle.isServiceThere() ? "the CAN service has none" : "is the CAN service running?"));
            result = kTimedOut;
        }
    }
    return result;
}

}  // namespace

Run declareGet(CommandLine& line) {
    const auto options = std::make_shared<GetOptions>();
    line.option("PROPERTY", options->properties, "");
    addJson(line, options->json);
    addTimeout(line, options->timeout);
    return [options](const StopSignals& stop, Output& output) { return runGet(*options, stop, output); };
}

}  // namespace qvn::tools
