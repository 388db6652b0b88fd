#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "can-service-sim/AnswerRules.h"
#include "can-service-sim/Journal.h"
#include "can-service-sim/Simulation.h"

namespace qvn::tools {

/// What comes of it that a client sets a signal: by the rules, other signals take values, at once or later.
class Answers {
public:
    Answers(Simulation& simulation, const Journal& journal, AnswerRules rules);

    /// A client has set a signal.
    void take(std::uint32_t code, const std::string& raw);

private:
    void answer(std::size_t set, const AnswerRule& rule, std::int32_t value);

    Simulation& mSimulation;
    const Journal& mJournal;
    AnswerRules mRules;
    std::size_t mSets = 0;
};

}  // namespace qvn::tools
