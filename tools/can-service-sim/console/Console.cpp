#include "can-service-sim/console/Console.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>

#include "can-service-sim/Journal.h"
#include "can-service-sim/PlayerLines.h"
#include "can-service-sim/trace/TraceCommands.h"
#include "desk/BadInput.h"
#include "desk/Glob.h"
#include "desk/Number.h"
#include "desk/PhysicalValue.h"
#include "desk/SignalNames.h"
#include "desk/SignalNotes.h"
#include "desk/Text.h"
#include "tables/DecodingRules.h"
#include "tables/MessageCatalogue.h"

namespace qvn::tools {
namespace {

std::string commandsText(TraceCommand::Of of) {
    std::string text;
    for (const std::string& command : commandsOf(of, " S")) {
        text += (text.empty() ? "!" : "|") + command;
    }
    return text;
}

std::string helpText() {
    return "An event of a trace happens now, or at its time when there is one in front:\n"
           "  SIGNAL=VALUE [every S [for S]]    SIGNAL#BYTES    SIGNAL" +
           commandsText(TraceCommand::Of::Signal) +
           "\n"
           "  SIGNAL=ramp A..B for S    sine A..B over S    step A,B,C    random A..B [seed N]\n"
           "  MESSAGE" +
           commandsText(TraceCommand::Of::Message) +
           "    reverse=1|0    service=up|down\n"
           "Commands:\n"
           "  list [PATTERN]    signals and messages       show [PATTERN]    present values\n"
           "  pause, resume     the trace                  speed X           of the trace\n"
           "  seek S            to S seconds of the trace  help, quit\n";
}

const std::vector<CommandForm> kCommands = {{"help", false}, {"list", true}, {"quit", false}, {"show", true}};

// How soon a job that came from the background takes lines.
constexpr std::chrono::milliseconds kBetweenLooks(250);

}  // namespace

std::vector<std::string> commandNames() {
    std::vector<std::string> names;
    for (const std::vector<CommandForm>& commands : {kCommands, kPlayerCommands}) {
        for (const CommandForm& command : commands) {
            names.push_back(command.name);
        }
    }
    return names;
}

std::string listText(const std::string& pattern) {
    std::string text;
    char line[160];
    for (const tables::DecodingRow& row : tables::kDecodingRules) {
        if (matchesGlob(pattern, signalName(row.code))) {
            std::snprintf(line, sizeof line, "%-40s %s  %s, 0 to %s\n", signalName(row.code).c_str(),
                          hexText(row.code).c_str(), kindText(row).c_str(), formatNumber(largestValue(row)).c_str());
            text += line;
        }
    }
    for (const tables::MessageRow& row : tables::kMessages) {
        if (matchesGlob(pattern, signalName(row.code))) {
            std::snprintf(line, sizeof line, "%-40s %s  message of %zu signals\n", signalName(row.code).c_str(),
                          hexText(row.code).c_str(), row.signals.size());
            text += line;
        }
    }
    return text;
}

Console::Console(EventLoop& loop, Output& output, Prompt& prompt)
    : mLoop(loop), mOutput(output), mPrompt(prompt), mReader(STDIN_FILENO) {}

/// A person corrects a line that is wrong; a script must not go on.
bool Console::isPerson() const {
    return mPrompt.isRunning() || isatty(STDIN_FILENO) != 0;
}

void Console::start(Player& player) {
    mPlayer = &player;
    // The system stops a background job that reads its terminal.
    if (isatty(STDIN_FILENO) != 0 && tcgetpgrp(STDIN_FILENO) != getpgrp()) {
        mLoop.unwatch(STDIN_FILENO);
        mLoop.at(Clock::now() + kBetweenLooks, [this] { start(*mPlayer); });
        return;
    }
    mLoop.watch(STDIN_FILENO, [this] { read(); });
}

void Console::read() {
    if (isatty(STDIN_FILENO) != 0 && tcgetpgrp(STDIN_FILENO) != getpgrp()) {
        start(*mPlayer);
        return;
    }
    if (mReader.read([this](const std::string& line) { take(line); })) {
        return;
    }
    mLoop.unwatch(STDIN_FILENO);
    if (mPrompt.isRunning()) {
        mPrompt.end();
        Journal::error("the prompt has ended; the service goes on");
    } else if (mReader.lineNumber() > 0) {
        mPlayer->endWhenDone();
    }
}

void Console::take(const std::string& line) {
    if (mFailed) {
        return;
    }
    try {
        if (const std::optional<Command> command = readCommand(line, kCommands)) {
            run(*command);
        } else if (const std::string told = takeLine(*mPlayer, line); !told.empty()) {
            print(told);
        }
    } catch (const BadInput& error) {
        if (mPrompt.isRunning()) {
            print(std::string(error.what()) + "\n");
            return;
        }
        Journal::error("stdin:" + std::to_string(mReader.lineNumber()) + ": " + error.what());
        if (!isPerson()) {
            mFailed = true;
            mLoop.end();
        }
    }
}

void Console::run(const Command& command) {
    const std::string pattern = command.argument.empty() ? "*" : command.argument;
    if (command.name == "help") {
        print(helpText());
    } else if (command.name == "list") {
        print(listText(pattern));
    } else if (command.name == "show") {
        show(pattern);
    } else {
        mLoop.end();
    }
}

void Console::show(const std::string& pattern) {
    std::string text;
    for (const tables::DecodingRow& row : tables::kDecodingRules) {
        const std::optional<CanService::Value> known = mPlayer->service().signal(row.code);
        if (!known || !matchesGlob(pattern, signalName(row.code))) {
            continue;
        }
        const std::string value = decodedText(row, known->raw);
        const bool whole = known->raw.size() >= row.bytes;
        char line[160];
        std::snprintf(line, sizeof line, "%-40s %s\n", signalName(row.code).c_str(),
                      whole ? valueWithNote(row.code, parseNumber(value, "a value")).c_str() : value.c_str());
        text += line;
    }
    print(text.empty() ? "no signal that matches has a value\n" : text);
}

}  // namespace qvn::tools
