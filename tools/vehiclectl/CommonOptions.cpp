#include "vehiclectl/CommonOptions.h"

namespace qvn::tools {

void addJson(CommandLine& line, bool& json) {
    line.flag("--json", json, "One JSON object a line");
}

void addTimeout(CommandLine& line, double& timeout) {
    line.option("--timeout S", timeout, {0.0, 86400.0}, "Seconds to wait");
}

void addTimeToLook(CommandLine& line, double& duration) {
    line.option("--duration S", duration, {0.05, 86400.0}, "Seconds to look");
}

void addEnds(CommandLine& line, Ends& ends, const char* countText) {
    line.option("--duration S", ends.duration, {0.0, 1e6}, "Seconds after which to end");
    line.option("--count N", ends.count, {1.0, 1e9}, countText);
}

}  // namespace qvn::tools
