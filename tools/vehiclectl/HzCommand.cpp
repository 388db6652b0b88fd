#include <algorithm>
#include <cmath>
#include <map>
#include <nlohmann/json.hpp>
#include <set>

#include "desk/ExitCode.h"
#include "desk/Json.h"
#include "desk/MonotonicTime.h"
#include "vehiclectl/Commands.h"
#include "vehiclectl/Waiting.h"

namespace qvn::tools {
namespace {

constexpr double kMillisecond = 1e6;  // ns

/// The periods between the values of one property, in ms.
class Periods {
public:
    void add(long at) {
        if (last_ != 0 && at > last_) {
            const double period = static_cast<double>(at - last_) / kMillisecond;
            shortest_ = count_ == 0 ? period : std::min(shortest_, period);
            longest_ = std::max(longest_, period);
            ++count_;
            // Welford's way to a variance in one pass.
            const double distance = period - mean_;
            mean_ += distance / count_;
            squares_ += distance * (period - mean_);
        }
        last_ = at;
    }

    int count() const { return count_; }
    double rate() const { return 1e3 / mean_; }
    double mean() const { return mean_; }
    double shortest() const { return shortest_; }
    double longest() const { return longest_; }
    double deviation() const { return std::sqrt(squares_ / count_); }

private:
    long last_ = 0;
    int count_ = 0;
    double mean_ = 0.0, squares_ = 0.0, shortest_ = 0.0, longest_ = 0.0;
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

}  // namespace

int hzCommand(const MeasureOptions& options, const StopSignals& stop, Output& output) {
    const std::vector<const PropertyInfo*> wanted = receivedProperties(options.properties);
    std::map<int, Periods> periods;
    std::vector<int> ids;
    for (const PropertyInfo* const property : wanted) {
        ids.push_back(static_cast<int>(property->id));
    }
    if (!startFeed(ids)) {
        return kFailed;
    }
    std::set<int> known;  // of these the current value has come, which is no sign of a period
    followFor(options.duration, stop, [&](const Update& update) {
        if (update.kind == Update::Kind::Value && update.origin == Update::Origin::Service) {
            if (!known.insert(update.property).second) {
                periods[update.property].add(update.value.timestamp);
            }
        }
    });
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
        std::fprintf(stderr, "%zu of %zu properties came less than twice in %g s\n", silent, wanted.size(),
                     options.duration);
    }
    return silent == wanted.size() ? kTimedOut : kDone;
}

}  // namespace qvn::tools
