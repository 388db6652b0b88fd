#pragma once

#include <lgklog/lgklog.h>

namespace qvn::host {

/// The levels at which the host libraries log. Each line begins with the name of its library.
enum LogLevel {
    kLogFatal = 0,  ///< something that the application asked for will not work
    kLogError = 1,  ///< something went wrong, and the library goes on
};

}  // namespace qvn::host
