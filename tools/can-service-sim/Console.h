#pragma once

#include <memory>
#include <string>

#include "can-service-sim/EventLoop.h"
#include "can-service-sim/LineReader.h"
#include "can-service-sim/Player.h"
#include "can-service-sim/PlayerLines.h"
#include "can-service-sim/Prompt.h"
#include "desk/Output.h"

namespace qvn::tools {

/// The signals and messages that match a pattern, a line each.
std::string listText(const std::string& pattern);

/// Takes lines from standard input: events of a trace, and commands. A terminal gets a prompt. Input that ends without
/// a single line (a service started in the background) leaves the service running; input that gave lines ends it after
/// the last of them.
class Console {
public:
    Console(EventLoop& loop, Output& output);
    ~Console();

    void start(Player& player);

    /// Shows whole lines, above the prompt if there is one.
    void print(std::string text);

    /// Whether a line of a script was wrong.
    bool failed() const { return failed_; }

private:
    void read();
    void end();
    void take(const std::string& line);
    void run(const Command& command);
    void show(const std::string& pattern);

    EventLoop& loop_;
    Output& output_;
    Player* player_ = nullptr;
    LineReader reader_;
    std::unique_ptr<Prompt> prompt_;
    bool failed_ = false;
};

}  // namespace qvn::tools
