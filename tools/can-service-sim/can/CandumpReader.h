#pragma once

#include <functional>
#include <istream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "can-service-sim/can/CanFrame.h"
#include "can-service-sim/trace/TraceEvents.h"

namespace qvn::tools {

/// One line of a log.
struct LoggedFrame {
    double time = 0.0;              ///< seconds of whatever clock the log has
    std::optional<CanFrame> frame;  ///< none for a remote or an error frame: they carry nothing
};

/// Reads a line such as "(1436509052.249713) can0 123#DEADBEEF". Nothing for a blank line.
/// @throws BadInput with the word that is wrong and what is expected
std::optional<LoggedFrame> readCandumpLine(std::string_view line);

/// Reads a log as `candump -l` writes it: the frames that `keep` wants as the events of a trace, in the order of their
/// times, which count from the earliest of all frames.
/// @throws BadInput "NAME:LINE: ..." for the first line that is wrong
std::vector<TraceEvent> readCandump(std::istream& input, const std::string& name,
                                    const std::function<bool(const CanFrame&)>& keep);

}  // namespace qvn::tools
