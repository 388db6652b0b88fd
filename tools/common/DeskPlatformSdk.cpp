#include "common/DeskPlatform.h"

namespace qvn::tools {

bool prepareDesk(std::string*) {
    return true;
}

bool writeReverseLine(bool, std::string* error) {
    *error = "the reverse line is real hardware with these platform libraries; move it there";
    return false;
}

}  // namespace qvn::tools
