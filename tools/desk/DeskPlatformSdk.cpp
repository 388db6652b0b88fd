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

}  // namespace qvn::tools
