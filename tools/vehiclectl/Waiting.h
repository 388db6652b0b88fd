#pragma once

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "desk/PollUntil.h"
#include "desk/StopSignals.h"
#include "vehiclectl/PropertyFeed.h"

namespace qvn::tools {

enum class Awaited { Updates, Stop, Deadline, Input };

/// Waits until updates arrive, the user stops the tool or the deadline passes. `gone` is a descriptor that is readable
/// when nobody wants the result any more; that is a Stop, too. `inputs` are descriptors that make an Input readable.
Awaited await(const PropertyFeed& feed, const StopSignals& stop, std::optional<Clock::time_point> deadline,
              int gone = -1, const std::array<int, 2>& inputs = {-1, -1});

/// The point in time so many seconds from now.
Clock::time_point inSeconds(double seconds);

/// Whether a service can be reached here at all; tells the user why not.
bool prepareService();

/// Subscribes, and tells the user when the vehicle client could not start.
bool startFeed(const std::vector<int>& ids);

/// Takes the feed's updates as they come until the time is over. False when the user stops the tool.
bool followFor(double seconds, const StopSignals& stop, const std::function<void(Update)>& take);

/// An error line on standard error.
void printError(const std::string& text);

}  // namespace qvn::tools
