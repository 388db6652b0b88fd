#pragma once

#include <cstddef>
#include <functional>
#include <istream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "can-service-sim/trace/TraceEvents.h"

namespace qvn::tools {

/// Reads one line of a trace. Nothing for a blank line or a comment.
/// @throws BadInput with the word that is wrong and what is expected; the caller adds file and line
std::optional<TraceEvent> readTraceLine(std::string_view line);

/// Reads a whole trace, in which every event has a time, and sorts it by time.
/// @param progress is told now and then how many events there are so far
/// @throws BadInput "NAME:LINE: ..." for the first line that is wrong
std::vector<TraceEvent> readTrace(std::istream& input, const std::string& name,
                                  const std::function<void(std::size_t)>& progress = {});

}  // namespace qvn::tools
