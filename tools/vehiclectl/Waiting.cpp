#include "vehiclectl/Waiting.h"

#include <algorithm>
#include <cstdio>
#include <string>

#include "desk/BadInput.h"
#include "desk/DeskPlatform.h"
#include "ipc_common_soc/ServiceName.h"

namespace qvn::tools {

Awaited await(const PropertyFeed& feed, const StopSignals& stop, std::optional<Clock::time_point> deadline, int gone) {
    for (;;) {
        pollfd fds[] = {{stop.fd(), POLLIN, 0}, {feed.fd(), POLLIN, 0}, {gone, POLLIN, 0}};
        const int ready = pollUntil(fds, 3, deadline);
        if (ready > 0) {
            return fds[0].revents != 0 || fds[2].revents != 0 ? Awaited::Stop : Awaited::Updates;
        }
        if (ready == 0) {
            return Awaited::Deadline;
        }
    }
}

Clock::time_point inSeconds(double seconds) {
    return Clock::now() + std::chrono::ceil<Clock::duration>(std::chrono::duration<double>(seconds));
}

bool startFeed(const std::vector<int>& ids) {
    std::string error;
    if (!prepareDesk(wire::kServiceName, &error)) {
        printError(error);
        return false;
    }
    if (PropertyFeed::instance().subscribe(ids)) {
        return true;
    }
    printError("the vehicle client could not start; its log says why, more of it with -v");
    return false;
}

std::vector<const PropertyInfo*> receivedProperties(const std::vector<std::string>& names) {
    std::vector<const PropertyInfo*> result;
    for (const std::string& name : names) {
        const PropertyInfo& property = propertyNamed(name);
        if (property.received.empty()) {
            throw BadInput(property.name + " can only be set; the vehicle never reports it");
        }
        if (std::find(result.begin(), result.end(), &property) == result.end()) {
            result.push_back(&property);
        }
    }
    return result;
}

std::vector<const PropertyInfo*> receivedProperties() {
    std::vector<const PropertyInfo*> result;
    for (const PropertyInfo& property : properties()) {
        if (!property.received.empty()) {
            result.push_back(&property);
        }
    }
    return result;
}

void printError(const std::string& text) {
    std::fprintf(stderr, "vehiclectl: %s\n", text.c_str());
}

}  // namespace qvn::tools
