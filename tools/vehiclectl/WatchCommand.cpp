#include <algorithm>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

#include "desk/ExitCode.h"
#include "desk/Json.h"
#include "vehiclectl/Commands.h"
#include "vehiclectl/CommonOptions.h"
#include "vehiclectl/PropertySelection.h"
#include "vehiclectl/PropertyTable.h"
#include "vehiclectl/UserErrors.h"
#include "vehiclectl/VehicleLoop.h"
#include "vehiclectl/WatchScreen.h"

namespace qvn::tools {

using namespace platform::vehicle;

namespace {

struct WatchOptions {
    std::vector<std::string> properties;  ///< names or patterns; none: all that are received
    Ends ends;                            ///< counts changes
    bool exitOnLoss = false;              ///< end when the CAN service goes
    bool json = false;
};

constexpr std::chrono::milliseconds kRedrawInterval(50);
constexpr std::chrono::milliseconds kAgeInterval(500);
constexpr std::chrono::seconds kPatience(1);  // until it tells that the service is not there

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// One `watch` from its start to its summary.
class Watch {
public:
    Watch(const WatchOptions& options, Output& output, const std::vector<const PropertyInfo*>& properties)
        : options_(options), output_(output), properties_(properties), table_(properties) {
        if (options.ends.duration) {
            end_ = inSeconds(*options.ends.duration);
        }
        if (!options.json && WatchScreen::possible()) {
            screen_ = std::make_unique<WatchScreen>(table_, properties);
        }
    }

    /// False when the vehicle cannot be reached.
    bool start() {
        if (!vehicle_.open()) {
            return false;
        }
        vehicle_.followService([this](const ServiceState& service) { take(service); });
        vehicle_.follow(properties_, [this](const PropertyState& update) { take(update); });
        return true;
    }

    void run(const StopSignals& stop) {
        while (!finished()) {
            const Awaited what = screen_ ? vehicle_.await(stop, nextWake(), output_.fd(), screen_->fds())
                                         : vehicle_.await(stop, nextWake(), output_.fd());
            if (what == Awaited::Stop) {
                break;
            }
            if (what == Awaited::Input) {
                screen_->handleInput();
                redrawDue_ = true;
            }
            screen_ ? refresh() : tellAbsence();
        }
        screen_.reset();
        if (timeIsOver()) {
            output_.hurry();
        }
        output_.drain();
    }

    bool lost() const { return lost_; }

    void printSummary() const {
        std::fprintf(stderr, "%ld changes of %zu properties in %.1f s\n", changes_, changed_.size(),
                     secondsSince(start_));
    }

private:
    bool timeIsOver() const { return end_ && Clock::now() >= *end_; }

    bool hasAll() const { return (options_.ends.count && changes_ >= *options_.ends.count) || timeIsOver(); }

    bool finished() const { return hasAll() || lost_ || (screen_ && screen_->ended()); }

    std::optional<Clock::time_point> nextWake() const {
        std::optional<Clock::time_point> next = end_;
        const auto wakeAt = [&](Clock::time_point time) { next = next ? std::min(*next, time) : time; };
        if (screen_) {
            wakeAt(redrawDue_ ? nextRedraw_ : nextRedraw_ + kAgeInterval);
        } else if (!toldOfService_) {
            wakeAt(start_ + kPatience);
        }
        return next;
    }

    void take(const PropertyState& update) {
        if (hasAll()) {
            return;
        }
        if (table_.apply(update).changed) {
            const PropertyRow& row = table_.of(update.property);
            ++changes_;
            changed_.insert(row.info);
            printLine(row);
        }
        redrawDue_ = true;
    }

    void take(const ServiceState& service) {
        redrawDue_ = true;
        if (hasAll() || service.presence == ServicePresence::NeverThere) {
            return;
        }
        const bool up = service.presence == ServicePresence::There;
        lost_ = lost_ || (options_.exitOnLoss && !up);
        tellService(up, up ? "up" : "gone; the values are stale now");
    }

    void tellAbsence() {
        if (!toldOfService_ && Clock::now() >= start_ + kPatience) {
            tellService(false, "not there yet");
        }
    }

    void tellService(bool up, const char* text) {
        toldOfService_ = true;
        if (options_.json) {
            output_.write(jsonText(Json{{"event", "service"}, {"up", up}}) + "\n");
        } else if (!screen_) {
            output_.print("%9.3f  CAN service %s\n", secondsSince(start_), text);
        }
    }

    void printLine(const PropertyRow& row) {
        if (options_.json) {
            output_.write(jsonText(row) + "\n");
        } else if (!screen_) {
            output_.print("%9.3f  %-36s %-12s %s\n", secondsSince(start_), row.info->name.c_str(),
                          valueText(*row.info, row.state).c_str(), statusText(row.state));
        }
    }

    /// Redraws after a change, but at most every kRedrawInterval, and without one every kAgeInterval for the ages.
    void refresh() {
        const Clock::time_point now = Clock::now();
        if (now < nextRedraw_ || (!redrawDue_ && now < nextRedraw_ + kAgeInterval)) {
            return;
        }
        screen_->draw(vehicle_.session().serviceState());
        redrawDue_ = false;
        nextRedraw_ = now + kRedrawInterval;
    }

    const WatchOptions& options_;
    Output& output_;
    const std::vector<const PropertyInfo*> properties_;
    PropertyTable table_;
    std::unique_ptr<WatchScreen> screen_;
    Clock::time_point start_ = Clock::now();
    std::optional<Clock::time_point> end_;
    Clock::time_point nextRedraw_ = start_;
    bool redrawDue_ = true;
    bool toldOfService_ = false;
    bool lost_ = false;
    long changes_ = 0;
    std::set<const PropertyInfo*> changed_;
    VehicleLoop vehicle_;
};

int runWatch(const WatchOptions& options, const StopSignals& stop, Output& output) {
    Watch watch(options, output, receivedProperties(options.properties));
    if (!watch.start()) {
        return kFailed;
    }
    watch.run(stop);
    watch.printSummary();
    if (watch.lost()) {
        printError("the CAN service has gone");
        return kTimedOut;
    }
    return kDone;
}

}  // namespace

Run declareWatch(CommandLine& line) {
    const auto options = std::make_shared<WatchOptions>();
    line.option("[PROPERTY]", options->properties, "");
    addJson(line, options->json);
    addEnds(line, options->ends, "Changes after which to end");
    line.flag("--exit-on-loss", options->exitOnLoss, "End with exit code 3 when the CAN service goes");
    return [options](const StopSignals& stop, Output& output) { return runWatch(*options, stop, output); };
}

}  // namespace qvn::tools
