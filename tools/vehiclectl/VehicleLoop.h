#pragma once

#include <vehicle/VehicleSession.h>

#include <array>
#include <optional>
#include <vector>

#include "desk/PollUntil.h"
#include "desk/PropertyNames.h"
#include "desk/StopSignals.h"
#include "vehiclectl/TaskQueue.h"

namespace qvn::tools {

enum class Awaited { Updates, Stop, Deadline, Input };

/// The vehicle for one command: a session whose handlers run on the command's own thread, while that waits here.
class VehicleLoop {
public:
    using VehicleSession = platform::vehicle::VehicleSession;

    VehicleLoop() = default;
    /// Tells the user when updates came faster than they could be handled.
    ~VehicleLoop();
    VehicleLoop(const VehicleLoop&) = delete;
    VehicleLoop& operator=(const VehicleLoop&) = delete;

    /// To be called first. Tells the user, and is false, when the vehicle cannot be reached from here.
    bool open();
    VehicleSession& session() { return *mSession; }
    bool isServiceThere() const;

    /// Every reception of the properties, and every change of how they are received.
    void follow(const std::vector<const PropertyInfo*>& properties, const VehicleSession::Handler& handler);
    void followService(VehicleSession::ServiceHandler handler);

    /// Waits until updates have come, and been handled, the user stops the tool or the deadline passes. `gone` is a
    /// descriptor that is readable when nobody wants the result any more; that is a Stop, too. `inputs` are descriptors
    /// that make an Input readable.
    Awaited await(const StopSignals& stop, std::optional<Clock::time_point> deadline, int gone = -1,
                  const std::array<int, 2>& inputs = {-1, -1});
    /// False when the user stops the tool.
    bool awaitFor(double seconds, const StopSignals& stop);

private:
    TaskQueue mTasks;
    std::optional<VehicleSession> mSession;
    std::vector<platform::vehicle::Subscription> mSubscriptions;
    unsigned long mMissed = 0;
};

}  // namespace qvn::tools
