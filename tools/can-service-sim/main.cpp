#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "can-service-sim/CanInput.h"
#include "can-service-sim/CanListener.h"
#include "can-service-sim/Console.h"
#include "can-service-sim/InputLines.h"
#include "can-service-sim/Player.h"
#include "can-service-sim/TraceCut.h"
#include "can-service-sim/panel/Panel.h"
#include "can-service-sim/panel/PanelOptions.h"
#include "desk/BadInput.h"
#include "desk/CommandLine.h"
#include "desk/DeskPlatform.h"
#include "desk/ExitCode.h"
#include "desk/Number.h"
#include "desk/Output.h"
#include "desk/PhysicalValue.h"
#include "desk/SignalNames.h"
#include "desk/SignalNotes.h"
#include "desk/Text.h"
#include "desk/Tool.h"
#include "ipc_common_soc/ServiceName.h"
#include "tables/MessageCatalogue.h"

namespace qvn::tools {
namespace {

struct CommandLine {
    std::string trace;
    std::string input;
    std::string rules;
    std::string name = wire::kServiceName;
    TraceCut cut;
    double speed = 1.0;
    std::vector<std::string> notes;
    bool loop = false;
    bool exitAtEnd = false;
    bool noInitial = false;
    bool quiet = false;
    bool verbose = false;
    bool json = false;
    bool list = false;
    CanInput can;
    PanelOptions panel;

    bool readsStandardInput() const {
        const bool alone = trace.empty() && !can.given();
        return alone || input == "-" || isatty(STDIN_FILENO) != 0;
    }
};

void declare(CLI::App& app, CommandLine& line) {
    app.add_option("--play", line.trace, "Trace file to play")->type_name("FILE");
    app.add_option("input", line.input,
                   "'-' reads trace lines from standard input; so do a call without another input, and a terminal")
        ->type_name("");
    app.add_option("--speed", line.speed, "Play that many times faster, 0.001 to 1000")
        ->check(numberFrom(0.001, 1000.0))
        ->type_name("X");
    const auto addTime = [&](const char* name, std::optional<double>& time, const char* text) {
        return app.add_option(name, time, text)->check(numberFrom(0.0, 1e6))->type_name("S");
    };
    auto* const from =
        addTime("--from", line.cut.from, "Play the trace from S seconds on, as if nothing had been before");
    addTime("--to", line.cut.to, "Play the trace up to S seconds");
    addTime("--start-at", line.cut.startAt, "Start S seconds into the trace, in the state of then")->excludes(from);
    auto* const loop = app.add_flag("--loop", line.loop, "Play the trace or log again and again");
    app.add_flag("--exit-at-end", line.exitAtEnd, "End with the trace or log instead of serving on")->excludes(loop);
    line.can.declare(app);
    app.add_option("--rules", line.rules, "Answers to sets, added to the built-in ones")->type_name("FILE");
    app.add_option("--signals", line.notes, "Descriptions, units and value names to add, as in share/signals")
        ->allow_extra_args(false)
        ->type_name("FILE");
    line.panel.declare(app);
    app.add_option("--name", line.name, "Name of the service")->capture_default_str()->type_name("NAME");
    app.add_flag("--no-initial", line.noInitial, "Have no values until the trace gives them, instead of zeros");
    auto* const quiet = app.add_flag("-q,--quiet", line.quiet, "Report errors only");
    app.add_flag("-v,--verbose", line.verbose, "Report every value and subscription, too")->excludes(quiet);
    app.add_flag("--json", line.json, "Report as JSON, one object a line");
    app.add_flag("--list", line.list, "Show the signals and messages that a trace can name");
}

void check(const CommandLine& line) {
    if (!line.input.empty() && line.input != "-") {
        throw BadInput(tools::quoted(line.input) + " is not expected here; a trace is played by --play " + line.input);
    }
}

/// Reads a trace, and tells a person who waits how far it is.
std::vector<TraceEvent> readWithProgress(const std::string& name, bool quiet) {
    std::ifstream file = openFile(name);
    bool shown = false;
    std::function<void(std::size_t)> progress;
    if (!quiet && isatty(STDERR_FILENO) != 0) {
        progress = [&](std::size_t events) {
            std::fprintf(stderr, "\rreading %s: %zu events", name.c_str(), events);
            shown = true;
        };
    }
    std::vector<TraceEvent> trace = readTrace(file, name, progress);
    std::fputs(shown ? "\r\033[K" : "", stderr);
    return trace;
}

/// What is said of a trace needs one.
void checkTraceOptions(const CommandLine& line) {
    const std::pair<const char*, bool> given[] = {{"--loop", line.loop},
                                                  {"--exit-at-end", line.exitAtEnd},
                                                  {"--from", line.cut.from.has_value()},
                                                  {"--to", line.cut.to.has_value()},
                                                  {"--start-at", line.cut.startAt.has_value()}};
    for (const auto& [option, isGiven] : given) {
        if (isGiven && line.trace.empty() && line.can.log().empty()) {
            throw BadInput(std::string(option) + " needs --play or --candump");
        }
    }
}

/// The trace and the log, as one.
std::vector<TraceEvent> readTraceOf(CommandLine& line) {
    checkTraceOptions(line);
    line.can.read();
    std::vector<TraceEvent> trace = line.can.takeTrace();
    if (!line.trace.empty()) {
        std::vector<TraceEvent> log = std::exchange(trace, readWithProgress(line.trace, line.quiet));
        trace.insert(trace.end(), std::make_move_iterator(log.begin()), std::make_move_iterator(log.end()));
    }
    if (line.can.given() && !line.trace.empty()) {
        std::stable_sort(trace.begin(), trace.end(), [](const auto& a, const auto& b) { return *a.time < *b.time; });
    }
    const bool empty = trace.empty();
    trace = cutTrace(std::move(trace), line.cut);
    const std::string& name = line.trace.empty() ? line.can.log() : line.trace;
    if (trace.empty() && !empty) {
        throw BadInput("nothing of " + name + " is left to play; see --from, --to and --start-at");
    }
    if (line.loop && traceEnd(trace) <= 0.0) {
        throw BadInput(name + " is over at once; --loop needs a trace that takes time");
    }
    return trace;
}

Player::Options playerOptions(const CommandLine& line) {
    Player::Options options;
    options.serviceName = line.name;
    options.speed = line.speed;
    options.loop = line.loop;
    options.exitAtEnd = line.exitAtEnd;
    options.initialValues = !line.noInitial;
    options.rules = parkingRules();
    options.decoder = line.can.decoder();
    if (!line.rules.empty()) {
        std::ifstream file = openFile(line.rules);
        extendRules(options.rules, readRules(file, line.rules));
    }
    return options;
}

int serve(CommandLine& line, const StopSignals& stop, Output& output) {
    std::vector<TraceEvent> trace = readTraceOf(line);
    Player::Options options = playerOptions(line);
    std::string error;
    if (!prepareDesk(line.name, &error)) {
        Journal::error(error);
        return kFailed;
    }
    EventLoop loop(stop);
    Console console(loop, output);
    Journal journal([&console](std::string text) { console.print(std::move(text)); },
                    line.quiet     ? Journal::Detail::Quiet
                    : line.verbose ? Journal::Detail::All
                                   : Journal::Detail::Normal,
                    line.json ? Journal::Form::Json : Journal::Form::Text);
    line.can.describe(journal);
    Player player(loop, journal, std::move(options));
    Panel panel(loop, player, journal, line.name);
    if (line.panel.given() && !panel.start(line.panel.address(), line.panel.port(), &error)) {
        Journal::error(error);
        return kFailed;
    }
    if (!player.start(std::move(trace))) {
        return kFailed;
    }
    CanListener listener(loop, journal, line.can.interface(), [&](const CanFrame& frame) { player.receive(frame); });
    if (!line.can.interface().empty() && !listener.start(&error)) {
        Journal::error(error);
        return kFailed;
    }
    if (line.readsStandardInput()) {
        console.start(player);
    }
    loop.run();
    if (console.failed()) {
        return kUsage;
    }
    return player.failed() ? kFailed : kDone;
}

int run(int argc, char** argv, const StopSignals& stop, Output& output) {
    CLI::App app("The CAN service for a desk: plays traces, answers sets, moves the reverse line.", "can-service-sim");
    CommandLine line;
    declare(app, line);
    if (const auto ended = readCommandLine(app, argc, argv, output)) {
        return *ended;
    }
    check(line);
    for (const std::string& file : line.notes) {
        SignalNotes::instance().addFile(file);
    }
    if (line.list) {
        output.write(listText("*"));
        return kDone;
    }
    return serve(line, stop, output);
}

}  // namespace
}  // namespace qvn::tools

int main(int argc, char** argv) {
    using namespace qvn::tools;
    return runTool([&](const StopSignals& stop, Output& output) { return run(argc, argv, stop, output); },
                   &Journal::error);
}
