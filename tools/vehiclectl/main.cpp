#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <utility>

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

using Command = std::function<int(const StopSignals&, Output&)>;

struct Options {
    bool verbose = false;
    bool showsLog = false;  ///< the command is about what the user has set
    ListOptions list;
    InfoOptions info;
    GetOptions get;
    WatchOptions watch;
    SetOptions set;
    RecordOptions record;
    MeasureOptions hz;
    MeasureOptions status;
    DoctorOptions doctor;
    std::vector<std::string> notes;
    std::vector<std::string> databases;
    Command command;
};

constexpr char kJson[] = "One JSON object a line";

void addTimeout(CommandLine& command, double& timeout) {
    command.option("--timeout S", timeout, {0.0, 86400.0}, "Seconds to wait");
}

void addEnds(CommandLine& command, std::optional<double>& duration, std::optional<long>& count, const char* countText) {
    command.option("--duration S", duration, {0.0, 1e6}, "Seconds after which to end");
    command.option("--count N", count, {1.0, 1e9}, countText);
}

void addMeasuring(CommandLine& command, MeasureOptions& options) {
    command.flag("--json", options.json, kJson);
    command.option("--duration S", options.duration, {0.05, 86400.0}, "Seconds to look");
}

void declareCommands(CommandLine& line, Options& options) {
    const auto add = [&](const char* name, const char* about, Command command) {
        return line.command(name, about, [&options, command = std::move(command)] { options.command = command; });
    };

    CommandLine list = add("list", "Show all properties: identifier, type, direction, signals",
                           [&](const auto&, Output& output) { return listCommand(options.list, output); });
    list.flag("--json", options.list.json, kJson);

    CommandLine info = add("info", "Show all that is known of properties: signals, ranges, value names",
                           [&](const auto&, Output& output) { return infoCommand(options.info, output); });
    info.option("PROPERTY", options.info.properties, "");
    info.flag("--json", options.info.json, kJson);

    CommandLine get = add("get", "Show the current value of properties",
                          [&](const auto& stop, Output& output) { return getCommand(options.get, stop, output); });
    get.option("PROPERTY", options.get.properties, "");
    get.flag("--json", options.get.json, kJson);
    addTimeout(get, options.get.timeout);

    CommandLine watch =
        add("watch", "Show properties as they change; all when none is named",
            [&](const auto& stop, Output& output) { return watchCommand(options.watch, stop, output); });
    watch.option("[PROPERTY]", options.watch.properties, "");
    watch.flag("--json", options.watch.json, kJson);
    addEnds(watch, options.watch.duration, options.watch.count, "Changes after which to end");
    watch.flag("--exit-on-loss", options.watch.exitOnLoss, "End with exit code 3 when the CAN service goes");

    CommandLine set = add("set", "Set a property; nothing confirms it unless --wait-for is given",
                          [&](const auto& stop, Output&) { return setCommand(options.set, stop); });
    set.option("PROPERTY", options.set.property, "");
    set.option("VALUE", options.set.value, "");
    set.option("--wait-for PROPERTY=VALUE", options.set.waitFor, "End when this property has this value");
    addTimeout(set, options.set.timeout);

    CommandLine record =
        add("record", "Write what comes over the bus as a trace for can-service-sim",
            [&](const auto& stop, Output& output) { return recordCommand(options.record, stop, output); });
    record.option("FILE", options.record.file, "'-' is standard output");
    record.option("[PROPERTY]", options.record.properties, "None: all that the vehicle reports");
    addEnds(record, options.record.duration, options.record.count, "Events after which to end");
    record.flag("--force", options.record.force, "Replace an existing file");

    CommandLine hz = add("hz", "Measure how often properties come, and how evenly",
                         [&](const auto& stop, Output& output) { return hzCommand(options.hz, stop, output); });
    hz.option("[PROPERTY]", options.hz.properties, "");
    addMeasuring(hz, options.hz);

    CommandLine status =
        add("status", "Show whether the CAN service is there, and what comes from it",
            [&](const auto& stop, Output& output) { return statusCommand(options.status, stop, output); });
    addMeasuring(status, options.status);

    CommandLine doctor = line.command("doctor", "Look for what keeps an application from seeing values here", [&] {
        options.showsLog = true;
        options.command = [&](const auto&, Output& output) { return doctorCommand(options.doctor, output); };
    });
    doctor.option("[PROPERTY]", options.doctor.properties, "What the application subscribes: is it ever reported?");
}

void declare(CommandLine& line, Options& options) {
    line.flag("-v,--verbose", options.verbose, "Show the client's log on standard error");
    line.option("--signals FILE", options.notes, "Descriptions, units and value names to add, as in share/signals");
    line.option("--dbc FILE", options.databases, "Signal database whose units and value names to add");
    line.closeHelpWith(std::string("A PROPERTY is an identifier (0x21600E1F) or a signal's name (ESP_FD2_VehSpd).\n") +
                       kExitCodes);
    declareCommands(line, options);
}

int run(int argc, char** argv, const StopSignals& stop, Output& output) {
    CommandLine line("vehiclectl", "Reads, watches and sets vehicle properties.");
    Options options;
    declare(line, options);
    if (const auto ended = line.read(argc, argv, output)) {
        return *ended;
    }
    if (!options.command) {
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
    if (!options.showsLog) {
        chooseLogLevel(options.verbose);
    }
    return options.command(stop, output);
}

}  // namespace
}  // namespace qvn::tools

int main(int argc, char** argv) {
    using namespace qvn::tools;
    return runTool([&](const StopSignals& stop, Output& output) { return run(argc, argv, stop, output); }, &printError);
}
