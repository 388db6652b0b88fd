#pragma once

#include <optional>
#include <string>
#include <vector>

#include "desk/PollUntil.h"
#include "desk/PropertyNames.h"
#include "desk/StopSignals.h"
#include "vehiclectl/PropertyFeed.h"

namespace qvn::tools {

enum class Awaited { Updates, Stop, Deadline };

/// Waits until updates arrive, the user stops the tool or the deadline passes. `gone` is a descriptor that is readable
/// when nobody wants the result any more; that is a Stop, too.
Awaited await(const PropertyFeed& feed, const StopSignals& stop, std::optional<Clock::time_point> deadline,
              int gone = -1);

/// The point in time so many seconds from now.
Clock::time_point inSeconds(double seconds);

/// Subscribes, and tells the user when the vehicle client could not start.
bool startFeed(const std::vector<int>& ids);

/// The properties that the user named, each of which must be one that the vehicle reports.
/// @throws BadInput
std::vector<const PropertyInfo*> receivedProperties(const std::vector<std::string>& names);

/// All properties that the vehicle reports.
std::vector<const PropertyInfo*> receivedProperties();

/// An error line on standard error.
void printError(const std::string& text);

}  // namespace qvn::tools
