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
        : mOptions(options), mOutput(output), mProperties(properties), mTable(properties) {
        if (options.ends.duration) {
            mEnd = inSeconds(*options.ends.duration);
        }
        if (!options.json && WatchScreen::possible()) {
            mScreen = std::make_unique<WatchScreen>(mTable, properties);
        }
    }

    /// False when the vehicle cannot be reached.
    bool start() {
        if (!mVehicle.open()) {
            return false;
        }
        mVehicle.followService([this](const ServiceState& service) { take(service); });
        mVehicle.follow(mProperties, [this](const PropertyState& update) { take(update); });
        return true;
    }

    void run(const StopSignals& stop) {
        while (!finished()) {
            const Awaited what = mScreen ? mVehicle.await(stop, nextWake(), mOutput.fd(), mScreen->fds())
                                         : mVehicle.await(stop, nextWake(), mOutput.fd());
            if (what == Awaited::Stop) {
                break;
            }
            if (what == Awaited::Input) {
                mScreen->handleInput();
                mRedrawDue = true;
            }
            mScreen ? refresh() : tellAbsence();
        }
        mScreen.reset();
        if (timeIsOver()) {
            mOutput.hurry();
        }
        mOutput.drain();
    }

    bool lost() const { return mLost; }

    void printSummary() const {
        std::fprintf(stderr, "%ld changes of %zu properties in %.1f s\n", mChanges, mChanged.size(),
                     secondsSince(mStart));
    }

private:
    bool timeIsOver() const { return mEnd && Clock::now() >= *mEnd; }

    bool hasAll() const { return (mOptions.ends.count && mChanges >= *mOptions.ends.count) || timeIsOver(); }

    bool finished() const { return hasAll() || mLost || (mScreen && mScreen->ended()); }

    std::optional<Clock::time_point> nextWake() const {
        std::optional<Clock::time_point> next = mEnd;
        const auto wakeAt = [&](Clock::time_point time) { next = next ? std::min(*next, time) : time; };
        if (mScreen) {
            wakeAt(mRedrawDue ? mNextRedraw : mNextRedraw + kAgeInterval);
        } else if (!mToldOfService) {
            wakeAt(mStart + kPatience);
        }
        return next;
    }

    void take(const PropertyState& update) {
        if (hasAll()) {
            return;
        }
        if (mTable.apply(update).changed) {
            const PropertyRow& row = mTable.of(update.property);
            ++mChanges;
            mChanged.insert(row.info);
            printLine(row);
        }
        mRedrawDue = true;
    }

    void take(const ServiceState& service) {
        mRedrawDue = true;
        if (hasAll() || service.presence == ServicePresence::NeverThere) {
            return;
        }
        const bool up = service.presence == ServicePresence::There;
        mLost = mLost || (mOptions.exitOnLoss && !up);
        tellService(up, up ? "up" : "gone; the values are stale now");
    }

    void tellAbsence() {
        if (!mToldOfService && Clock::now() >= mStart + kPatience) {
            tellService(false, "not there yet");
        }
    }

    void tellService(bool up, const char* text) {
        mToldOfService = true;
        if (mOptions.json) {
            mOutput.write(jsonText(Json{{"event", "service"}, {"up", up}}) + "\n");
        } else if (!mScreen) {
            mOutput.print("%9.3f  CAN service %s\n", secondsSince(mStart), text);
        }
    }

    void printLine(const PropertyRow& row) {
        if (mOptions.json) {
            mOutput.write(jsonText(row) + "\n");
        } else if (!mScreen) {
            mOutput.print("%9.3f  %-36s %-12s %s\n", secondsSince(mStart), row.info->name.c_str(),
                          valueText(*row.info, row.state).c_str(), statusText(row.state));
        }
    }

    /// Redraws after a change, but at most every kRedrawInterval, and without one every kAgeInterval for the ages.
    void refresh() {
        const Clock::time_point now = Clock::now();
        if (now < mNextRedraw || (!mRedrawDue && now < mNextRedraw + kAgeInterval)) {
            return;
        }
        mScreen->draw(mVehicle.session().serviceState());
        mRedrawDue = false;
        mNextRedraw = now + kRedrawInterval;
    }

    const WatchOptions& mOptions;
    Output& mOutput;
    const std::vector<const PropertyInfo*> mProperties;
    PropertyTable mTable;
    std::unique_ptr<WatchScreen> mScreen;
    Clock::time_point mStart = Clock::now();
    std::optional<Clock::time_point> mEnd;
    Clock::time_point mNextRedraw = mStart;
    bool mRedrawDue = true;
    bool mToldOfService = false;
    bool mLost = false;
    long mChanges = 0;
    std::set<const PropertyInfo*> mChanged;
    VehicleLoop mVehicle;
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
