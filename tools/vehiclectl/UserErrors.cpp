#include "vehiclectl/UserErrors.h"

#include <cstdio>

#include "desk/DeskPlatform.h"
#include "ipc_common_soc/ServiceName.h"

namespace qvn::tools {

void printError(const std::string& text) {
    std::fprintf(stderr, "vehiclectl: %s\n", text.c_str());
}

bool prepareService() {
    std::string error;
    if (!prepareDesk(wire::kServiceName, &error)) {
        printError(error);
        return false;
    }
    return true;
}

}  // namespace qvn::tools
