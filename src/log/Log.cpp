#include "log/Log.h"

namespace lgk {

int covertLogLevel(LogLevel level) {
    // The logging library has no level below 5.
    static const int kLevels[] = {0, 1, 2, 3, 4, 5, 5};
    return kLevels[static_cast<std::int32_t>(level)];
}

}  // namespace lgk
