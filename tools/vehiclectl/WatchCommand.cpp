#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <set>

#include "desk/ExitCode.h"
#include "vehiclectl/Commands.h"
#include "vehiclectl/PropertyState.h"
#include "vehiclectl/Waiting.h"
#include "vehiclectl/WatchTable.h"

namespace qvn::tools {
namespace {

constexpr std::chrono::milliseconds kRedrawInterval(50);
constexpr std::chrono::milliseconds kAgeInterval(500);

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// One `watch` from its start to its summary.
class Watch {
public:
    Watch(const WatchOptions& options, Output& output, std::vector<const PropertyInfo*> properties)
        : options_(options), output_(output), states_(properties) {
        if (options.duration) {
            end_ = inSeconds(*options.duration);
        }
        if (!options.json && isatty(STDOUT_FILENO) != 0) {
            table_ = std::make_unique<WatchTable>(output, states_, std::move(properties));
        }
    }

    std::vector<int> ids() const { return states_.ids(); }

    void run(const StopSignals& stop) {
        PropertyFeed& feed = PropertyFeed::instance();
        while (!finished()) {
            const Awaited what = await(feed, stop, nextWake(), output_.fd());
            if (what == Awaited::Stop) {
                break;
            }
            for (Update& update : feed.take()) {
                take(std::move(update));
            }
            refresh();
        }
        if (table_) {
            table_->draw();
            table_.reset();
        }
        if (timeIsOver()) {
            output_.hurry();
        }
        output_.drain();
    }

    void printSummary() const {
        std::fprintf(stderr, "%ld changes of %zu properties in %.1f s\n", changes_, changed_.size(),
                     secondsSince(start_));
    }

private:
    bool timeIsOver() const { return end_ && Clock::now() >= *end_; }

    bool finished() const {
        const bool counted = options_.count && changes_ >= *options_.count;
        return counted || timeIsOver();
    }

    std::optional<Clock::time_point> nextWake() const {
        if (!table_) {
            return end_;
        }
        const Clock::time_point redraw = redrawDue_ ? nextRedraw_ : nextRedraw_ + kAgeInterval;
        return end_ ? std::min(*end_, redraw) : redraw;
    }

    void take(Update update) {
        const PropertyState* const state = states_.apply(std::move(update));
        if (!state || finished()) {
            return;
        }
        ++changes_;
        changed_.insert(state->info);
        if (table_) {
            redrawDue_ = true;
        } else {
            printLine(*state);
        }
    }

    void printLine(const PropertyState& state) {
        if (options_.json) {
            output_.write(jsonText(state) + "\n");
        } else {
            output_.print("%9.3f  %-36s %-12s %s\n", secondsSince(start_), state.info->name.c_str(),
                          valueText(state).c_str(), statusText(state));
        }
    }

    /// Redraws after a change, but at most every kRedrawInterval, and without one every kAgeInterval for the ages.
    /// While the terminal has not taken the last picture there is no new one.
    void refresh() {
        const Clock::time_point now = Clock::now();
        if (!table_ || now < nextRedraw_ || (!redrawDue_ && now < nextRedraw_ + kAgeInterval)) {
            return;
        }
        if (output_.idle()) {
            table_->draw();
            redrawDue_ = false;
        }
        nextRedraw_ = now + kRedrawInterval;
    }

    const WatchOptions& options_;
    Output& output_;
    PropertyStates states_;
    std::unique_ptr<WatchTable> table_;
    Clock::time_point start_ = Clock::now();
    std::optional<Clock::time_point> end_;
    Clock::time_point nextRedraw_ = start_;
    bool redrawDue_ = true;
    long changes_ = 0;
    std::set<const PropertyInfo*> changed_;
};

}  // namespace

int watchCommand(const WatchOptions& options, const StopSignals& stop, Output& output) {
    Watch watch(options, output,
                options.properties.empty() ? receivedProperties() : receivedProperties(options.properties));
    if (!startFeed(watch.ids())) {
        return kFailed;
    }
    watch.run(stop);
    watch.printSummary();
    return kDone;
}

}  // namespace qvn::tools
