#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "can-service-sim/Player.h"
#include "can-service-sim/can/CanInput.h"
#include "can-service-sim/can/CanListener.h"
#include "can-service-sim/console/Completion.h"
#include "can-service-sim/console/Console.h"
#include "can-service-sim/console/InputLines.h"
#include "can-service-sim/console/Prompt.h"
#include "can-service-sim/panel/Panel.h"
#include "can-service-sim/panel/PanelOptions.h"
#include "can-service-sim/trace/TraceCut.h"
#include "can-service-sim/trace/TraceReader.h"
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

struct Options {
    std::string trace;
    std::string input;
    std::string rules;
    std::string name = wire::kServiceName;
    std::optional<double> from;
    std::optional<double> to;
    std::optional<double> startAt;
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

void declare(CommandLine& line, Options& options) {
    constexpr CommandLine::Range kTimes{0.0, 1e6};
    line.option("--play FILE", options.trace, "Trace file to play");
    line.option("[input]", options.input,
                "'-' reads trace lines from standard input; so do a call without another input, and a terminal");
    line.option("--speed X", options.speed, {0.001, 1000.0}, "Play that many times faster, 0.001 to 1000");
    line.option("--from S", options.from, kTimes, "Play the trace from S seconds on, as if nothing had been before");
    line.option("--to S", options.to, kTimes, "Play the trace up to S seconds");
    line.option("--start-at S", options.startAt, kTimes, "Start S seconds into the trace, as if played up to there")
        .excludes("--from");
    line.flag("--loop", options.loop, "Play the trace or log again and again");
    line.flag("--exit-at-end", options.exitAtEnd, "End with the trace or log instead of serving on").excludes("--loop");
    options.can.declare(line);
    line.option("--rules FILE", options.rules, "Answers to sets, added to the built-in ones");
    line.option("--signals FILE", options.notes, "Descriptions, units and value names to add, as in share/signals");
    options.panel.declare(line);
    line.option("--name NAME", options.name, "Name of the service");
    line.flag("--no-initial", options.noInitial, "Have no values until the trace gives them, instead of zeros");
    line.flag("-q,--quiet", options.quiet, "Report errors only");
    line.flag("-v,--verbose", options.verbose, "Report every value and subscription, too").excludes("--quiet");
    line.flag("--json", options.json, "Report as JSON, one object a line");
    line.flag("--list", options.list, "Show the signals and messages that a trace can name");
}

void check(const Options& options) {
    if (!options.input.empty() && options.input != "-") {
        throw BadInput(tools::quoted(options.input) + " is not expected here; a trace is played by --play " +
                       options.input);
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
void checkTraceOptions(const Options& options) {
    const std::pair<const char*, bool> given[] = {{"--loop", options.loop},
                                                  {"--exit-at-end", options.exitAtEnd},
                                                  {"--from", options.from.has_value()},
                                                  {"--to", options.to.has_value()},
                                                  {"--start-at", options.startAt.has_value()}};
    for (const auto& [option, isGiven] : given) {
        if (isGiven && options.trace.empty() && options.can.log().empty()) {
            throw BadInput(std::string(option) + " needs --play or --candump");
        }
    }
}

/// The trace and the log, as one.
std::vector<TraceEvent> readTraceOf(Options& options) {
    checkTraceOptions(options);
    options.can.read();
    std::vector<TraceEvent> trace = options.can.takeTrace();
    if (!options.trace.empty()) {
        std::vector<TraceEvent> log = std::exchange(trace, readWithProgress(options.trace, options.quiet));
        trace.insert(trace.end(), std::make_move_iterator(log.begin()), std::make_move_iterator(log.end()));
    }
    if (options.can.given() && !options.trace.empty()) {
        std::stable_sort(trace.begin(), trace.end(), [](const auto& a, const auto& b) { return *a.time < *b.time; });
    }
    const bool empty = trace.empty();
    trace = cutTrace(std::move(trace), options.from, options.to);
    const std::string& name = options.trace.empty() ? options.can.log() : options.trace;
    if (trace.empty() && !empty) {
        throw BadInput("nothing of " + name + " is left to play; see --from and --to");
    }
    if (options.loop && traceEnd(trace) <= 0.0) {
        throw BadInput(name + " is over at once; --loop needs a trace that takes time");
    }
    return trace;
}

Player::Options playerOptions(const Options& options) {
    Player::Options result;
    result.serviceName = options.name;
    result.speed = options.speed;
    result.loop = options.loop;
    result.exitAtEnd = options.exitAtEnd;
    result.startAt = options.startAt;
    result.initialValues = !options.noInitial;
    result.rules = parkingRules();
    result.decoder = options.can.decoder();
    if (!options.rules.empty()) {
        std::ifstream file = openFile(options.rules);
        extendRules(result.rules, readRules(file, options.rules));
    }
    return result;
}

int serve(Options& options, const StopSignals& stop, Output& output, Prompt& prompt) {
    std::vector<TraceEvent> trace = readTraceOf(options);
    Player::Options forPlayer = playerOptions(options);
    std::string error;
    if (!prepareDesk(options.name, &error)) {
        Journal::error(error);
        return kFailed;
    }
    if (options.readsStandardInput()) {
        output.drain();
        prompt.start([](const std::string& begun) { return completeLine(begun, commandNames()); });
    }
    EventLoop loop(stop);
    Console console(loop, output, prompt);
    Journal journal([&console](std::string text) { console.print(std::move(text)); },
                    options.quiet     ? Journal::Detail::Quiet
                    : options.verbose ? Journal::Detail::All
                                      : Journal::Detail::Normal,
                    options.json ? Journal::Form::Objects : Journal::Form::Lines);
    options.can.describe(journal);
    Player player(loop, journal, std::move(forPlayer));
    Panel panel(loop, player, journal, options.name);
    if (options.panel.given() && !panel.start(options.panel.address(), options.panel.port(), &error)) {
        Journal::error(error);
        return kFailed;
    }
    if (!player.start(std::move(trace))) {
        return kFailed;
    }
    CanListener listener(loop, journal, options.can.interface(), [&](const CanFrame& frame) { player.receive(frame); });
    if (!options.can.interface().empty() && !listener.start(&error)) {
        Journal::error(error);
        return kFailed;
    }
    if (options.readsStandardInput()) {
        console.start(player);
    }
    loop.run();
    if (console.failed()) {
        return kUsage;
    }
    return player.failed() ? kFailed : kDone;
}

int run(int argc, char** argv, const StopSignals& stop, Output& output, Prompt& prompt) {
    CommandLine line("can-service-sim",
                     "The CAN service for a desk: plays traces, answers sets, moves the reverse line.");
    Options options;
    declare(line, options);
    if (const auto ended = line.read(argc, argv, output)) {
        return *ended;
    }
    check(options);
    for (const std::string& file : options.notes) {
        SignalNotes::instance().addFile(file);
    }
    if (options.list) {
        output.write(listText("*"));
        return kDone;
    }
    return serve(options, stop, output, prompt);
}

}  // namespace
}  // namespace qvn::tools

int main(int argc, char** argv) {
    using namespace qvn::tools;
    Prompt prompt;  // ends after the last output
    return runTool([&](const StopSignals& stop, Output& output) { return run(argc, argv, stop, output, prompt); },
                   &Journal::error);
}
