#include "can-service-sim/Answers.h"

#include <optional>
#include <utility>

#include "desk/BadInput.h"
#include "desk/PhysicalValue.h"
#include "desk/SignalNames.h"

namespace qvn::tools {

Answers::Answers(Simulation& simulation, const Journal& journal, AnswerRules rules)
    : mSimulation(simulation), mJournal(journal), mRules(std::move(rules)) {}

void Answers::take(std::uint32_t code, const std::string& raw) {
    const tables::SetRow* const row = tables::findSetSignal(code);
    const std::optional<std::int32_t> value = row ? decodeSet(*row, raw) : std::nullopt;
    if (!value) {
        mJournal.ignoredSet(code, raw, row ? "it is of the wrong length" : "it cannot be set");
        return;
    }
    mSimulation.run();
    const AnswerRules answers = matchingRules(mRules, code, *value);
    const std::size_t set = ++mSets;
    mJournal.set(set, code, *value, raw, answers.size());
    for (const AnswerRule& rule : answers) {
        mSimulation.at(mSimulation.time() + vehicleTime(rule.delay), [=, value = *value] { answer(set, rule, value); });
    }
}

void Answers::answer(std::size_t set, const AnswerRule& rule, std::int32_t value) {
    try {
        const tables::DecodingRow& row = *tables::findDecodingRule(rule.answerCode);
        const SignalEvent event{rule.answerCode, encodePhysical(row, rule.answerValue.value_or(value)), {}};
        mJournal.answer(set, event.code, event.raw);
        mSimulation.happen(event);
    } catch (const BadInput& error) {
        mJournal.noAnswer(set, "no answer by " + signalName(rule.answerCode) + ": " + error.what());
    }
}

}  // namespace qvn::tools
