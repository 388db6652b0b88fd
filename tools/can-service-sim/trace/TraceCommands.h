#pragma once

#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "can-service-sim/trace/TraceEvents.h"

namespace qvn::tools {

/// A word that may stand behind a '!' in a trace, what it does, and how it is told of.
struct TraceCommand {
    enum class Of { Message, Signal, Either };

    const char* word;
    Of of;
    std::variant<StopEvent, MessageEvent, FaultEvent> event;  ///< of no signal or message yet
    // Of a fault:
    const char* sentence = "";  ///< follows the name in the journal: "falls silent"
    const char* state = "";     ///< what is wrong while it lasts: "silent"; empty when it ends another one
    const char* seconds = "";   ///< what those are that follow each of its texts: "a delay in seconds"; empty for none

    bool takesSeconds() const { return *seconds != '\0'; }
};

/// Null when there is no such word.
const TraceCommand* findTraceCommand(std::string_view word);
const TraceCommand& traceCommand(FaultEvent::Kind fault);

/// The words that may stand behind the name of a message, or of a signal, each with what follows it when it takes
/// seconds.
std::vector<std::string> commandsOf(TraceCommand::Of of, const std::string& seconds = "");

/// All of them, for an error: "MESSAGE!timeout, !ok or ...".
std::string expectedCommands();

}  // namespace qvn::tools
