#include "vehiclectl/VehicleLoop.h"

#include <iterator>
#include <string>
#include <utility>

#include "vehiclectl/UserErrors.h"

namespace qvn::tools {

using namespace platform::vehicle;

namespace {

/// Updates: four seconds of all signals a hundred times a second.
constexpr std::size_t kMostWaiting = 1U << 16U;

}  // namespace

VehicleLoop::~VehicleLoop() {
    if (mMissed > 0) {
        printError("updates came faster than they could be handled; " + std::to_string(mMissed) + " were left out");
    }
}

bool VehicleLoop::open() {
    if (!prepareService()) {
        return false;
    }
    mSession.emplace([this](const VehicleSession::Task& task) { mTasks.add(task); });
    // A client that could not read the vehicle's variant knows no property.
    if (mSession->state(static_cast<int>(properties().front().id)).type != PROPERTY_TYPE_UNKNOWN) {
        return true;
    }
    printError("the vehicle client could not start; its log says why, more of it with -v");
    return false;
}

bool VehicleLoop::isServiceThere() const {
    return mSession->serviceState().presence == ServicePresence::There;
}

void VehicleLoop::follow(const std::vector<const PropertyInfo*>& properties, const VehicleSession::Handler& handler) {
    std::vector<int> ids;
    for (const PropertyInfo* const property : properties) {
        ids.push_back(static_cast<int>(property->id));
    }
    const auto handle = [this, handler](const PropertyState& state) {
        mMissed += state.missed;
        handler(state);
    };
    mSubscriptions.push_back(mSession->subscribe(ids, handle, SubscribeOptions().queue(kMostWaiting)));
}

void VehicleLoop::followService(VehicleSession::ServiceHandler handler) {
    mSubscriptions.push_back(mSession->subscribeService(std::move(handler)));
}

Awaited VehicleLoop::await(const StopSignals& stop, std::optional<Clock::time_point> deadline, int gone,
                           const std::array<int, 2>& inputs) {
    pollfd fds[] = {{stop.fd(), POLLIN, 0},
                    {gone, POLLIN, 0},
                    {inputs[0], POLLIN, 0},
                    {inputs[1], POLLIN, 0},
                    {mTasks.fd(), POLLIN, 0}};
    const int ready = pollUntil(fds, std::size(fds), deadline);
    if (ready > 0 && (fds[0].revents != 0 || fds[1].revents != 0)) {
        return Awaited::Stop;
    }
    mTasks.run();
    if (ready > 0 && (fds[2].revents != 0 || fds[3].revents != 0)) {
        return Awaited::Input;
    }
    return deadline && Clock::now() >= *deadline ? Awaited::Deadline : Awaited::Updates;
}

bool VehicleLoop::awaitFor(double seconds, const StopSignals& stop) {
    const Clock::time_point end = inSeconds(seconds);
    Awaited what = Awaited::Updates;
    while (what == Awaited::Updates) {
        what = await(stop, end);
    }
    return what == Awaited::Deadline;
}

}  // namespace qvn::tools
