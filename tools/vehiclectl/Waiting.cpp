#include "vehiclectl/Waiting.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <string>
#include <utility>

#include "desk/BadInput.h"
#include "desk/DeskPlatform.h"
#include "desk/Glob.h"
#include "desk/SignalNames.h"
#include "desk/Text.h"
#include "ipc_common_soc/ServiceName.h"

namespace qvn::tools {

Awaited await(const PropertyFeed& feed, const StopSignals& stop, std::optional<Clock::time_point> deadline, int gone,
              const std::array<int, 2>& inputs) {
    for (;;) {
        pollfd fds[] = {{stop.fd(), POLLIN, 0},
                        {gone, POLLIN, 0},
                        {inputs[0], POLLIN, 0},
                        {inputs[1], POLLIN, 0},
                        {feed.fd(), POLLIN, 0}};
        const int ready = pollUntil(fds, std::size(fds), deadline);
        if (ready > 0) {
            const bool stopped = fds[0].revents != 0 || fds[1].revents != 0;
            const bool input = fds[2].revents != 0 || fds[3].revents != 0;
            return stopped ? Awaited::Stop : input ? Awaited::Input : Awaited::Updates;
        }
        if (ready == 0) {
            return Awaited::Deadline;
        }
    }
}

Clock::time_point inSeconds(double seconds) {
    return Clock::now() + std::chrono::ceil<Clock::duration>(std::chrono::duration<double>(seconds));
}

bool prepareService() {
    std::string error;
    if (!prepareDesk(wire::kServiceName, &error)) {
        printError(error);
        return false;
    }
    return true;
}

bool startFeed(const std::vector<int>& ids) {
    if (!prepareService()) {
        return false;
    }
    if (PropertyFeed::instance().subscribe(ids)) {
        return true;
    }
    printError("the vehicle client could not start; its log says why, more of it with -v");
    return false;
}

namespace {

std::vector<const PropertyInfo*> reported() {
    std::vector<const PropertyInfo*> result;
    for (const PropertyInfo& property : properties()) {
        if (!property.received.empty()) {
            result.push_back(&property);
        }
    }
    return result;
}

bool matches(const PropertyInfo& property, const std::string& pattern) {
    const auto isMatch = [&](std::uint32_t code) { return matchesGlob(withoutPrefix(pattern), signalName(code)); };
    return std::any_of(property.received.begin(), property.received.end(), isMatch);
}

/// What one argument of the user's stands for.
std::vector<const PropertyInfo*> propertiesMeant(const std::string& name) {
    if (name.find_first_of("*?") == std::string::npos) {
        const PropertyInfo& property = propertyNamed(name);
        if (property.received.empty()) {
            throw BadInput(property.name + " can only be set; the vehicle never reports it");
        }
        return {&property};
    }
    std::vector<const PropertyInfo*> result = reported();
    result.erase(std::remove_if(result.begin(), result.end(), [&](const auto* p) { return !matches(*p, name); }),
                 result.end());
    if (result.empty()) {
        throw BadInput("no property that the vehicle reports matches " + tools::quoted(name) +
                       "; 'vehiclectl list' shows them all");
    }
    return result;
}

}  // namespace

std::vector<const PropertyInfo*> receivedProperties(const std::vector<std::string>& names) {
    if (names.empty()) {
        return reported();
    }
    std::vector<const PropertyInfo*> result;
    for (const std::string& name : names) {
        for (const PropertyInfo* const property : propertiesMeant(name)) {
            if (std::find(result.begin(), result.end(), property) == result.end()) {
                result.push_back(property);
            }
        }
    }
    return result;
}

bool followFor(double seconds, const StopSignals& stop, const std::function<void(Update)>& take) {
    const Clock::time_point end = inSeconds(seconds);
    for (;;) {
        const Awaited what = await(PropertyFeed::instance(), stop, end);
        if (what != Awaited::Updates) {
            return what == Awaited::Deadline;
        }
        for (Update& update : PropertyFeed::instance().take()) {
            take(std::move(update));
        }
    }
}

void printError(const std::string& text) {
    std::fprintf(stderr, "vehiclectl: %s\n", text.c_str());
}

}  // namespace qvn::tools
