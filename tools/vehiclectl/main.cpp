#include <CLI/CLI.hpp>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <string>

#include "desk/CommandLine.h"
#include "desk/DatabaseNotes.h"
#include "desk/ExitCode.h"
#include "desk/Output.h"
#include "desk/SignalNotes.h"
#include "desk/StopSignals.h"
#include "desk/Tool.h"
#include "vehiclectl/Commands.h"
#include "vehiclectl/Waiting.h"

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

struct CommandLine {
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
    std::vector<std::string> notes;
    std::vector<std::string> databases;
    std::function<int(const StopSignals&, Output&)> command;
};

void addTimeout(CLI::App& command, double& timeout) {
    command.add_option("--timeout", timeout, "Seconds to wait")
        ->check(numberFrom(0.0, 86400.0))
        ->capture_default_str()
        ->type_name("S");
}

void addEnds(CLI::App& command, std::optional<double>& duration, std::optional<long>& count, const char* countText) {
    command.add_option("--duration", duration, "Seconds after which to end")
        ->check(numberFrom(0.0, 1e6))
        ->type_name("S");
    command.add_option("--count", count, countText)
        ->check(CLI::Range(1L, 1'000'000'000L).description(""))
        ->type_name("N");
}

void addMeasuring(CLI::App& command, MeasureOptions& options) {
    command.add_flag("--json", options.json, "One JSON object a line");
    command.add_option("--duration", options.duration, "Seconds to look")
        ->check(numberFrom(0.05, 86400.0))
        ->capture_default_str()
        ->type_name("S");
}

void declare(CLI::App& app, CommandLine& line) {
    app.add_flag("-v,--verbose", line.verbose, "Show the client's log on standard error");
    app.add_option("--signals", line.notes, "Descriptions, units and value names to add, as in share/signals")
        ->allow_extra_args(false)
        ->type_name("FILE");
    app.add_option("--dbc", line.databases, "Signal database whose units and value names to add")
        ->allow_extra_args(false)
        ->type_name("FILE");
    app.require_subcommand(0, 1);
    app.fallthrough();
    app.footer(std::string("A PROPERTY is an identifier (0x21600E1F) or a signal's name (ESP_FD2_VehSpd).\n") +
               kExitCodes);

    auto* const list = app.add_subcommand("list", "Show all properties: identifier, type, direction, signals");
    list->add_flag("--json", line.list.json, "One JSON object a line");
    list->callback(
        [&] { line.command = [&](const StopSignals&, Output& output) { return listCommand(line.list, output); }; });

    auto* const info = app.add_subcommand("info", "Show all that is known of properties: signals, ranges, value names");
    info->add_option("PROPERTY", line.info.properties)->required();
    info->add_flag("--json", line.info.json, "One JSON object a line");
    info->callback(
        [&] { line.command = [&](const StopSignals&, Output& output) { return infoCommand(line.info, output); }; });

    auto* const get = app.add_subcommand("get", "Show the current value of properties");
    get->add_option("PROPERTY", line.get.properties)->required();
    get->add_flag("--json", line.get.json, "One JSON object a line");
    addTimeout(*get, line.get.timeout);
    get->callback([&] {
        line.command = [&](const StopSignals& stop, Output& output) { return getCommand(line.get, stop, output); };
    });

    auto* const watch = app.add_subcommand("watch", "Show properties as they change; all when none is named");
    watch->add_option("PROPERTY", line.watch.properties);
    watch->add_flag("--json", line.watch.json, "One JSON object a line");
    addEnds(*watch, line.watch.duration, line.watch.count, "Changes after which to end");
    watch->add_flag("--exit-on-loss", line.watch.exitOnLoss, "End with exit code 3 when the CAN service goes");
    watch->callback([&] {
        line.command = [&](const StopSignals& stop, Output& output) { return watchCommand(line.watch, stop, output); };
    });

    auto* const set = app.add_subcommand("set", "Set a property; nothing confirms it unless --wait-for is given");
    set->add_option("PROPERTY", line.set.property)->required();
    set->add_option("VALUE", line.set.value)->required();
    set->add_option("--wait-for", line.set.waitFor, "End when this property has this value")
        ->type_name("PROPERTY=VALUE");
    addTimeout(*set, line.set.timeout);
    set->callback([&] { line.command = [&](const StopSignals& stop, Output&) { return setCommand(line.set, stop); }; });

    auto* const record = app.add_subcommand("record", "Write what comes over the bus as a trace for can-service-sim");
    record->add_option("FILE", line.record.file, "'-' is standard output")->required()->type_name("");
    record->add_option("PROPERTY", line.record.properties, "None: all that the vehicle reports");
    addEnds(*record, line.record.duration, line.record.count, "Events after which to end");
    record->add_flag("--force", line.record.force, "Replace an existing file");
    record->callback([&] {
        line.command = [&](const StopSignals& stop, Output& output) {
            return recordCommand(line.record, stop, output);
        };
    });

    auto* const hz = app.add_subcommand("hz", "Measure how often properties come, and how evenly");
    hz->add_option("PROPERTY", line.hz.properties);
    addMeasuring(*hz, line.hz);
    hz->callback([&] {
        line.command = [&](const StopSignals& stop, Output& output) { return hzCommand(line.hz, stop, output); };
    });

    auto* const status = app.add_subcommand("status", "Show whether the CAN service is there, and what comes from it");
    addMeasuring(*status, line.status);
    status->callback([&] {
        line.command = [&](const StopSignals& stop, Output& output) {
            return statusCommand(line.status, stop, output);
        };
    });

    app.add_subcommand("doctor", "Look for what keeps an application from seeing values here")->callback([&] {
        line.showsLog = true;
        line.command = [](const StopSignals&, Output& output) { return doctorCommand(output); };
    });
}

int run(int argc, char** argv, const StopSignals& stop, Output& output) {
    CLI::App app("Reads, watches and sets vehicle properties.", "vehiclectl");
    CommandLine line;
    declare(app, line);
    if (const auto ended = readCommandLine(app, argc, argv, output)) {
        return *ended;
    }
    if (!line.command) {
        std::cerr << app.help();
        return kUsage;
    }
    for (const std::string& file : line.databases) {
        addNotes(SignalNotes::instance(), readDatabaseFile(file));
    }
    for (const std::string& file : line.notes) {
        SignalNotes::instance().addFile(file);
    }
    if (!line.showsLog) {
        chooseLogLevel(line.verbose);
    }
    return line.command(stop, output);
}

}  // namespace
}  // namespace qvn::tools

int main(int argc, char** argv) {
    using namespace qvn::tools;
    return runTool([&](const StopSignals& stop, Output& output) { return run(argc, argv, stop, output); }, &printError);
}
