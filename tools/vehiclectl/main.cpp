#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "desk/CommandLine.h"
#include "desk/DatabaseNotes.h"
#include "desk/ExitCode.h"
#include "desk/Output.h"
#include "desk/SignalNotes.h"
#include "desk/StopSignals.h"
#include "desk/Tool.h"
#include "vehiclectl/Commands.h"
#include "vehiclectl/UserErrors.h"

namespace qvn::tools {
namespace {

constexpr char kExitCodes[] = "Exit codes: 0 done, 1 failed, 2 usage, 3 timed out.";

/// This tool tells the user what is wrong; the client's own log appears only with -v or a $QVN_LOG_LEVEL that is set.
void chooseLogLevel(bool verbose) {
    if (verbose) {
        setenv("QVN_LOG_LEVEL", "3", 1);
    } else {
        setenv("QVN_LOG_LEVEL", "0", 0);
    }
}

enum class Log { Quiet, AsSet };  // as set: the command is about what the user has set

/// A command is a row here, and the function that declares it.
constexpr struct Command {
    const char* name;
    const char* about;
    Run (*declare)(CommandLine& line);
    Log log = Log::Quiet;
} kCommands[] = {
    {"list", "Show all properties: identifier, type, direction, signals", declareList},
    {"info", "Show all that is known of properties: signals, ranges, value names", declareInfo},
    {"get", "Show the current value of properties", declareGet},
    {"watch", "Show properties as they change; all when none is named", declareWatch},
    {"set", "Set a property; nothing confirms it unless --wait-for is given", declareSet},
    {"record", "Write what comes over the bus as a trace for can-service-sim", declareRecord},
    {"hz", "Measure how often properties come, and how evenly", declareHz},
    {"status", "Show whether the CAN service is there, and what comes from it", declareStatus},
    {"doctor", "Look for what keeps an application from seeing values here", declareDoctor, Log::AsSet},
};

struct Options {
    bool verbose = false;
    std::vector<std::string> notes;
    std::vector<std::string> databases;
    const Command* command = nullptr;
    Run run;  ///< the command
};

void declare(CommandLine& line, Options& options) {
    line.flag("-v,--verbose", options.verbose, "Show the client's log on standard error");
    line.option("--signals FILE", options.notes, "Descriptions, units and value names to add, as in share/signals");
    line.option("--dbc FILE", options.databases, "Signal database whose units and value names to add");
    line.closeHelpWith(std::string("A PROPERTY is an identifier (0x21600E1F) or a signal's name (ESP_FD2_VehSpd).\n") +
                       kExitCodes);
    for (const Command& command : kCommands) {
        CommandLine own = line.command(command.name, command.about);
        own.whenRead([&options, &command, run = command.declare(own)] {
            options.command = &command;
            options.run = run;
        });
    }
}

int run(int argc, char** argv, const StopSignals& stop, Output& output) {
    CommandLine line("vehiclectl", "Reads, watches and sets vehicle properties.");
    Options options;
    declare(line, options);
    if (const auto ended = line.read(argc, argv, output)) {
        return *ended;
    }
    if (options.command == nullptr) {
        std::fputs(line.help().c_str(), stderr);
        return kUsage;
    }
    for (const std::string& file : options.databases) {
        const dbc::Database database = readDatabaseFile(file);
        if (const std::string warning = leftOutText(database); !warning.empty()) {
            printError(warning);
        }
        addNotes(SignalNotes::instance(), database);
    }
    for (const std::string& file : options.notes) {
        SignalNotes::instance().addFile(file);
    }
    if (options.command->log == Log::Quiet) {
        chooseLogLevel(options.verbose);
    }
    return options.run(stop, output);
}

}  // namespace
}  // namespace qvn::tools

int main(int argc, char** argv) {
    using namespace qvn::tools;
    return runTool([&](const StopSignals& stop, Output& output) { return run(argc, argv, stop, output); }, &printError);
}
