#include "can-service-sim/trace/TraceCommands.h"

#include <algorithm>
#include <initializer_list>
#include <iterator>

namespace qvn::tools {
namespace {

using Of = TraceCommand::Of;
using Fault = FaultEvent::Kind;

constexpr TraceCommand kCommands[] = {
    {"timeout", Of::Message, MessageEvent{0, true}},
    {"ok", Of::Message, MessageEvent{0, false}},
    {"silence", Of::Message, FaultEvent{Fault::Silence}, "falls silent", "silent"},
    {"stop", Of::Signal, StopEvent{}},
    {"freeze", Of::Signal, FaultEvent{Fault::Freeze}, "freezes", "frozen"},
    {"thaw", Of::Signal, FaultEvent{Fault::Thaw}, "thaws"},
    {"delay", Of::Either, FaultEvent{Fault::Delay}, "is late by", "late by", "a delay in seconds"},
};

std::vector<std::string> wordsOf(std::initializer_list<Of> of, const std::string& seconds) {
    std::vector<std::string> words;
    for (const TraceCommand& command : kCommands) {
        if (std::find(of.begin(), of.end(), command.of) != of.end()) {
            words.push_back(command.word + (command.takesSeconds() ? seconds : ""));
        }
    }
    return words;
}

/// "!a, !b or !c"
std::string alternatives(Of of) {
    const std::vector<std::string> words = wordsOf({of}, " SECONDS");
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "!" : &word == &words.back() ? " or !" : ", !") + word;
    }
    return text;
}

}  // namespace

const TraceCommand* findTraceCommand(std::string_view word) {
    const auto* const found =
        std::find_if(std::begin(kCommands), std::end(kCommands), [&](const auto& known) { return known.word == word; });
    return found == std::end(kCommands) ? nullptr : found;
}

const TraceCommand& traceCommand(FaultEvent::Kind fault) {
    return *std::find_if(std::begin(kCommands), std::end(kCommands), [&](const TraceCommand& known) {
        const auto* const event = std::get_if<FaultEvent>(&known.event);
        return event && event->kind == fault;
    });
}

std::vector<std::string> commandsOf(Of of, const std::string& seconds) {
    return wordsOf({of, Of::Either}, seconds);
}

std::string expectedCommands() {
    return "MESSAGE" + alternatives(Of::Message) + ", SIGNAL" + alternatives(Of::Signal) + ", or either with " +
           alternatives(Of::Either);
}

}  // namespace qvn::tools
