#pragma once

#include <string>
#include <utility>
#include <vector>

#include "can-service-sim/EventLoop.h"
#include "can-service-sim/Player.h"
#include "can-service-sim/PlayerLines.h"
#include "can-service-sim/console/LineReader.h"
#include "can-service-sim/console/Prompt.h"
#include "desk/Output.h"

namespace qvn::tools {

/// The signals and messages that match a pattern, a line each.
std::string listText(const std::string& pattern);

/// What the prompt completes at the begin of a line, beside names.
std::vector<std::string> commandNames();

/// Takes lines from standard input, which may be a prompt: events of a trace, and commands. Input that ends without a
/// single line (a service started in the background) leaves the service running; input that gave lines ends it after
/// the last of them.
class Console {
public:
    Console(EventLoop& loop, Output& output, Prompt& prompt);

    void start(Player& player);

    /// Shows whole lines.
    void print(std::string text) { mOutput.write(std::move(text)); }

    /// Whether a line of a script was wrong.
    bool failed() const { return mFailed; }

private:
    bool isPerson() const;
    void read();
    void take(const std::string& line);
    void run(const Command& command);
    void show(const std::string& pattern);

    EventLoop& mLoop;
    Output& mOutput;
    Prompt& mPrompt;
    Player* mPlayer = nullptr;
    LineReader mReader;
    bool mFailed = false;
};

}  // namespace qvn::tools
