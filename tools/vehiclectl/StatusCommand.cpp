#include <nlohmann/json.hpp>
#include <utility>

#include "desk/ExitCode.h"
#include "desk/Json.h"
#include "vehiclectl/Commands.h"
#include "vehiclectl/Health.h"
#include "vehiclectl/PropertySelection.h"
#include "vehiclectl/ServiceLink.h"
#include "vehiclectl/Waiting.h"

namespace qvn::tools {
namespace {

void print(Output& output, const Findings& found, bool json) {
    if (json) {
        const Json object = {{"service", found.up}, {"properties", found.properties},    {"values", found.withValue},
                             {"rate", found.rate},  {"messages", found.messages.size()}, {"timed_out", found.timedOut}};
        output.write(jsonText(object) + "\n");
        return;
    }
    std::string names;
    for (const std::string& name : found.timedOut) {
        names += (names.empty() ? "; timed out: " : ", ") + name;
    }
    if (!found.up) {
        output.print("CAN service  not there; start can-service-sim, or see 'vehiclectl doctor'\n");
        return;
    }
    output.print("CAN service  up\n");
    output.print("values       %zu of %zu properties, %.1f a second\n", found.withValue, found.properties, found.rate);
    output.print("messages     %zu of %zu ok%s\n", found.messages.size() - found.timedOut.size(), found.messages.size(),
                 names.c_str());
}

}  // namespace

int statusCommand(const MeasureOptions& options, const StopSignals& stop, Output& output) {
    Health health(receivedProperties());
    if (!startFeed(health.ids())) {
        return kFailed;
    }
    const ServiceLink service({});
    if (!followFor(options.duration, stop, [&](Update update) { health.take(std::move(update)); })) {
        return kFailed;
    }
    const Findings found = health.findings(options.duration);
    print(output, found, options.json);
    return found.up ? kDone : kTimedOut;
}

}  // namespace qvn::tools
