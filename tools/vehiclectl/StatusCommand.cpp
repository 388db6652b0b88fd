#include <memory>
#include <nlohmann/json.hpp>

#include "desk/ExitCode.h"
#include "desk/Json.h"
#include "vehiclectl/Commands.h"
#include "vehiclectl/CommonOptions.h"
#include "vehiclectl/Health.h"
#include "vehiclectl/PropertySelection.h"
#include "vehiclectl/VehicleLoop.h"

namespace qvn::tools {
namespace {

struct StatusOptions {
    double duration = 1.0;  ///< seconds to look
    bool json = false;
};

void print(Output& output, bool up, const Findings& found, bool json) {
    if (json) {
        const Json object = {{"service", up},      {"properties", found.properties},    {"values", found.withValue},
                             {"rate", found.rate}, {"messages", found.messages.size()}, {"timed_out", found.timedOut}};
        output.write(jsonText(object) + "\n");
        return;
    }
    std::string names;
    for (const std::string& name : found.timedOut) {
        names += (names.empty() ? "; timed out: " : ", ") + name;
    }
    if (!up) {
        output.print("CAN service  not there; start can-service-sim, or see 'vehiclectl doctor'\n");
        return;
    }
    output.print("CAN service  up\n");
    output.print("values       %zu of %zu properties, %.1f a second\n", found.withValue, found.properties, found.rate);
    output.print("messages     %zu of %zu ok%s\n", found.messages.size() - found.timedOut.size(), found.messages.size(),
                 names.c_str());
}

int runStatus(const StatusOptions& options, const StopSignals& stop, Output& output) {
    const std::vector<const PropertyInfo*> all = receivedProperties();
    Health health(all);
    VehicleLoop vehicle;
    if (!vehicle.open()) {
        return kFailed;
    }
    vehicle.follow(all, [&](const PropertyState& update) { health.take(update); });
    if (!vehicle.awaitFor(options.duration, stop)) {
        return kFailed;
    }
    const bool up = vehicle.isServiceThere();
    print(output, up, health.findings(options.duration), options.json);
    return up ? kDone : kTimedOut;
}

}  // namespace

Run declareStatus(CommandLine& line) {
    const auto options = std::make_shared<StatusOptions>();
    addJson(line, options->json);
    addTimeToLook(line, options->duration);
    return [options](const StopSignals& stop, Output& output) { return runStatus(*options, stop, output); };
}

}  // namespace qvn::tools
