#include "can-service-sim/Console.h"

#include <unistd.h>

#include <cstdio>
#include <utility>

#include "can-service-sim/Journal.h"
#include "can-service-sim/PlayerLines.h"
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

constexpr char kHelp[] =
    "An event of a trace happens now, or at its time when there is one in front:\n"
    "  SIGNAL=VALUE [every S [for S]]    SIGNAL#BYTES    SIGNAL!stop|freeze|thaw|delay S\n"
    "  SIGNAL=ramp A..B for S    sine A..B over S    step A,B,C    random A..B [seed N]\n"
    "  MESSAGE!timeout|ok|silence|delay S    reverse=1|0    service=up|down\n"
    "Commands:\n"
    "  list [PATTERN]    signals and messages       show [PATTERN]    present values\n"
    "  pause, resume     the trace                  speed X           of the trace\n"
    "  seek S            to S seconds of the trace  help, quit\n";

const std::vector<CommandForm> kCommands = {{"help", false}, {"list", true}, {"quit", false}, {"show", true}};

std::vector<std::string> wordsToComplete() {
    std::vector<std::string> words;
    for (const std::vector<CommandForm>& commands : {kCommands, kPlayerCommands}) {
        for (const CommandForm& command : commands) {
            words.push_back(command.name);
        }
    }
    for (const NameKind kind : {NameKind::Received, NameKind::Message}) {
        const std::vector<std::string> names = knownNames(kind);
        words.insert(words.end(), names.begin(), names.end());
    }
    words.insert(words.end(), {"reverse", "service"});
    return words;
}

}  // namespace

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

Console::Console(EventLoop& loop, Output& output) : loop_(loop), output_(output), reader_(STDIN_FILENO) {}

Console::~Console() = default;

void Console::start(Player& player) {
    player_ = &player;
    const bool terminal = isatty(STDIN_FILENO) != 0;
    // The system stops a background job that reads its terminal.
    if (terminal && tcgetpgrp(STDIN_FILENO) != getpgrp()) {
        return;
    }
    if (terminal && isatty(STDOUT_FILENO) != 0) {
        output_.drain();
        prompt_ = std::make_unique<Prompt>(wordsToComplete(),
                                           [this](const std::string* line) { line ? take(*line) : end(); });
    }
    loop_.watch(STDIN_FILENO, [this] { prompt_ ? prompt_->read() : read(); });
}

void Console::print(std::string text) {
    if (prompt_) {
        prompt_->printAbove(text);
    } else {
        output_.write(std::move(text));
    }
}

void Console::read() {
    if (reader_.read([this](const std::string& line) { take(line); })) {
        return;
    }
    loop_.unwatch(STDIN_FILENO);
    if (reader_.lineNumber() > 0) {
        loop_.at(player_->endOfScheduled(), [this] { loop_.end(); });
    }
}

void Console::end() {
    loop_.unwatch(STDIN_FILENO);
    loop_.end();
}

void Console::take(const std::string& line) {
    if (failed_) {
        return;
    }
    try {
        if (const std::optional<Command> command = readCommand(line, kCommands)) {
            run(*command);
        } else if (const std::string told = takeLine(*player_, line); !told.empty()) {
            print(told);
        }
    } catch (const BadInput& error) {
        if (prompt_) {
            print(std::string(error.what()) + "\n");
            return;
        }
        Journal::error("stdin:" + std::to_string(reader_.lineNumber()) + ": " + error.what());
        // A person at a terminal corrects the line; a script that is wrong must not go on.
        if (isatty(STDIN_FILENO) == 0) {
            failed_ = true;
            loop_.end();
        }
    }
}

void Console::run(const Command& command) {
    const std::string pattern = command.argument.empty() ? "*" : command.argument;
    if (command.name == "help") {
        print(kHelp);
    } else if (command.name == "list") {
        print(listText(pattern));
    } else if (command.name == "show") {
        show(pattern);
    } else {
        end();
    }
}

void Console::show(const std::string& pattern) {
    std::string text;
    for (const tables::DecodingRow& row : tables::kDecodingRules) {
        const std::optional<CanService::Value> known = player_->service().signal(row.code);
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
