#include "desk/Tool.h"

#include <fcntl.h>
#include <unistd.h>

#include <exception>
#include <iostream>

#include "desk/BadInput.h"
#include "desk/ExitCode.h"

namespace qvn::tools {
namespace {

/// A standard stream that the caller has closed must not become the number of the tool's next descriptor. What takes
/// its place here can be neither read nor written.
void keepStandardStreamsTaken() {
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
        if (fcntl(stream, F_GETFD) < 0) {
            (void)open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

}  // namespace

int runTool(const std::function<int(const StopSignals&, Output&)>& work,
            const std::function<void(const std::string&)>& printError) {
    keepStandardStreamsTaken();
    // A tool writes by its Output. What goes through here comes from a bus that has something to say at its end.
    std::cout.setstate(std::ios::badbit);
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
