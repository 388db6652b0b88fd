#include "can-service-sim/trace/TraceCommands.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "can-service-sim/Faults.h"
#include "can-service-sim/Journal.h"
#include "can-service-sim/trace/TraceReader.h"

namespace qvn::tools {
namespace {

TEST(TraceCommands, AFaultIsToldInItsWordsAndAsALineOfATrace) {
    const struct {
        const char* line;
        const char* told;
        const char* state;
    } cases[] = {
        {"EPB1!silence", "EPB1 falls silent", "silent"},
        {"EPB1_EPBSts!freeze", "EPB1_EPBSts freezes", "frozen"},
        {"EPB1_EPBSts!thaw", "EPB1_EPBSts thaws", ""},
        {"PLG_1!delay 0.1", "PLG_1 is late by 0.1 s", "late by 0.1 s"},
    };
    for (const auto& [line, told, state] : cases) {
        const auto fault = std::get<FaultEvent>(readTraceLine(line)->action);
        Json event;
        std::string text;
        Journal journal([&](const std::string& written) { text = written; }, Journal::Detail::Normal,
                        Journal::Form::Lines);
        journal.listen([&](const Json& heard) { event = heard; });
        journal.fault(fault);
        EXPECT_NE(text.find(std::string("  ") + told + "\n"), std::string::npos) << text;
        const std::string seconds = event.contains("seconds") ? " " + event["seconds"].dump() : "";
        EXPECT_EQ(event["of"].get<std::string>() + "!" + event["command"].get<std::string>() + seconds, line);
        Faults faults;
        faults.apply(fault, "1");
        EXPECT_EQ(faults.describe()[fault.code], state);
    }
}

}  // namespace
}  // namespace qvn::tools
