#pragma once

namespace qvn::tools {

/// Exit codes of both tools.
enum ExitCode { kDone = 0, kFailed = 1, kUsage = 2, kTimedOut = 3 };

}  // namespace qvn::tools
