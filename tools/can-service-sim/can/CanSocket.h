#pragma once

#include <functional>
#include <string>

#include "can-service-sim/can/CanFrame.h"

namespace qvn::tools {

/// A socket that receives the frames of a CAN interface, or -1; `error` is one sentence for the user then.
int openCanInterface(const std::string& name, std::string* error);

/// Takes the data frames that have arrived, a limited number at a time; never waits.
/// @return false when the interface is gone; `error` says why
bool readCanFrames(int socket, const std::function<void(const CanFrame&)>& onFrame, std::string* error);

}  // namespace qvn::tools
