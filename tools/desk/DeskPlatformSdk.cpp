#include "desk/DeskPlatform.h"

namespace qvn::tools {

bool prepareDesk(const std::string&, std::string*) {
    return true;
}

bool offersService(const std::string&, std::string*) {
    return true;
}

LineWrite writeReverseLine(bool, std::string* error) {
    *error = "the reverse line is real hardware with these platform libraries; move it there";
    return LineWrite::RealHardware;
}

std::vector<Finding> examineDesk(const std::string& service) {
    return {
        {Finding::Good, "CAN service", "'" + service + "' is looked for by these platform libraries' own naming", ""}};
}

}  // namespace qvn::tools
