#include "desk/Tool.h"

#include <exception>

#include "desk/BadInput.h"
#include "desk/ExitCode.h"

namespace qvn::tools {

int runTool(const std::function<int(const StopSignals&, Output&)>& work,
            const std::function<void(const std::string&)>& printError) {
    try {
        const StopSignals stop;
        Output output(stop);
        const int result = work(stop, output);
        std::string complaint;
        const bool written = output.finish(&complaint);
        if (!complaint.empty()) {
            printError(complaint);
        }
        return written ? result : kFailed;
    } catch (const BadInput& error) {
        printError(error.what());
        return kUsage;
    } catch (const std::exception& error) {
        printError(error.what());
        return kFailed;
    }
}

}  // namespace qvn::tools
