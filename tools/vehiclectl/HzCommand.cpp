#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "desk/ExitCode.h"
#include "desk/Json.h"
#include "vehiclectl/Commands.h"
#include "vehiclectl/CommonOptions.h"
#include "vehiclectl/Periods.h"
#include "vehiclectl/PropertySelection.h"
#include "vehiclectl/PropertyTable.h"
#include "vehiclectl/VehicleLoop.h"

namespace qvn::tools {
namespace {

struct HzOptions {
    std::vector<std::string> properties;  ///< none: all that are received
    double duration = 1.0;                ///< seconds to look
    bool json = false;
};

void print(Output& output, const PropertyInfo& property, const Periods& periods, bool json) {
    if (json) {
        const Json object = {{"name", property.name},           {"rate", periods.rate()},
                             {"period_ms", periods.mean()},     {"shortest_ms", periods.shortest()},
                             {"longest_ms", periods.longest()}, {"deviation_ms", periods.deviation()},
                             {"values", periods.count() + 1}};
        output.write(jsonText(object) + "\n");
    } else {
        output.print("%-36s %8.2f %10.3f %10.3f %10.3f %10.3f\n", property.name.c_str(), periods.rate(), periods.mean(),
                     periods.shortest(), periods.longest(), periods.deviation());
    }
}

int runHz(const HzOptions& options, const StopSignals& stop, Output& output) {
    const std::vector<const PropertyInfo*> wanted = receivedProperties(options.properties);
    PropertyTable table(wanted);
    std::map<int, Periods> periods;
    VehicleLoop vehicle;
    if (!vehicle.open()) {
        return kFailed;
    }
    vehicle.follow(wanted, [&](const PropertyState& update) {
        if (table.apply(withoutReverseLine(update)).repeated) {
            periods[update.property].add(update.timestamp);
        }
    });
    const Clock::time_point start = Clock::now();
    vehicle.awaitFor(options.duration, stop);
    std::size_t silent = 0;
    if (!options.json) {
        output.print("%-36s %8s %10s %10s %10s %10s\n", "PROPERTY", "RATE /s", "PERIOD ms", "SHORTEST", "LONGEST",
                     "DEVIATION");
    }
    for (const PropertyInfo* const property : wanted) {
        const Periods& of = periods[static_cast<int>(property->id)];
        if (of.count() > 0) {
            print(output, *property, of, options.json);
        } else {
            ++silent;
        }
    }
    if (silent > 0) {
        const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
        std::fprintf(stderr, "%zu of %zu properties came less than twice in %.1f s\n", silent, wanted.size(), seconds);
    }
    return silent == wanted.size() ? kTimedOut : kDone;
}

}  // namespace

Run declareHz(CommandLine& line) {
    const auto options = std::make_shared<HzOptions>();
    line.option("[PROPERTY]", options->properties, "");
    addJson(line, options->json);
    addTimeToLook(line, options->duration);
    return [options](const StopSignals& stop, Output& output) { return runHz(*options, stop, output); };
}

}  // namespace qvn::tools
