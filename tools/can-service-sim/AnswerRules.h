#pragma once

#include <cstdint>
#include <istream>
#include <optional>
#include <string>
#include <vector>

namespace qvn::tools {

/// What the vehicle does when a client sets a signal.
struct AnswerRule {
    std::uint32_t setCode = 0;
    std::optional<std::int32_t> setValue;  ///< only a set of this value is answered; without one every set
    std::uint32_t answerCode = 0;
    std::optional<double> answerValue;  ///< physical; without one the value that was set
    double delay = 0.0;                 ///< seconds
};

using AnswerRules = std::vector<AnswerRule>;

/// Reads rules, one a line: `SET[=VALUE] -> SIGNAL[=VALUE] [after SECONDS]`, with '#' before a remark.
/// @throws BadInput "NAME:LINE: ..." for the first line that is wrong
AnswerRules readRules(std::istream& input, const std::string& name);

/// The rules that ship with the simulator: share/rules/parking.rules as it was at build time.
AnswerRules parkingRules();

/// Adds rules; those for a set signal replace all that there were for the same signal.
void extendRules(AnswerRules& rules, const AnswerRules& more);

/// The rules that a set of this value triggers.
AnswerRules matchingRules(const AnswerRules& rules, std::uint32_t setCode, std::int32_t value);

}  // namespace qvn::tools
