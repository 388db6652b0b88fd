#include "vehiclectl/Waiting.h"

#include <cstdio>
#include <iterator>
#include <string>
#include <utility>

#include "desk/DeskPlatform.h"
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
