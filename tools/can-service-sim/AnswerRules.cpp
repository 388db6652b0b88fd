#include "can-service-sim/AnswerRules.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <sstream>

#include "can-service-sim/ParkingRules.h"
#include "can-service-sim/console/InputLines.h"
#include "desk/BadInput.h"
#include "desk/Number.h"
#include "desk/PhysicalValue.h"
#include "desk/SignalNames.h"
#include "desk/Text.h"

namespace qvn::tools {
namespace {

constexpr const char* kForm = "expected SET[=VALUE] -> SIGNAL[=VALUE] [after SECONDS]";
constexpr double kLongestDelay = 3600.0;

struct NameAndValue {
    std::string name;
    std::optional<double> value;
};

NameAndValue split(const std::string& word) {
    const std::size_t mark = word.find('=');
    if (mark == std::string::npos) {
        return {word, std::nullopt};
    }
    return {word.substr(0, mark), parseNumber(std::string_view(word).substr(mark + 1), "a value")};
}

std::int32_t checkedSetValue(std::uint32_t code, double value) {
    const tables::SetRange range = setRange(*tables::findSetSignal(code));
    if (value != std::floor(value) || value < range.low || value > range.high) {
        throw BadInput("value " + formatNumber(value) + " cannot be set; expected a whole number from " +
                       std::to_string(range.low) + " to " + std::to_string(range.high));
    }
    return static_cast<std::int32_t>(value);
}

AnswerRule readRule(const std::string& line) {
    std::istringstream words(line);
    std::string set;
    std::string arrow;
    std::string answer;
    words >> set >> arrow >> answer;
    if (arrow != "->" || answer.empty()) {
        throw BadInput(quoted(line) + " is not a rule; " + kForm);
    }
    AnswerRule rule;
    const NameAndValue trigger = split(set);
    rule.setCode = findCode(NameKind::Settable, trigger.name);
    if (!tables::findSetSignal(rule.setCode)) {
        throw BadInput(quoted(trigger.name) + " is not a signal that can be set");
    }
    if (trigger.value) {
        rule.setValue = checkedSetValue(rule.setCode, *trigger.value);
    }
    const NameAndValue target = split(answer);
    rule.answerCode = findCode(NameKind::Received, target.name);
    const tables::DecodingRow* const row = tables::findDecodingRule(rule.answerCode);
    if (!row) {
        throw BadInput(quoted(target.name) + " is not a signal that a client receives");
    }
    rule.answerValue = target.value;
    if (rule.answerValue) {
        encodePhysical(*row, *rule.answerValue);
    }
    if (std::string keyword; words >> keyword) {
        std::string seconds;
        words >> seconds;
        std::string extra;
        if (keyword != "after" || words >> extra) {
            throw BadInput(quoted(keyword == "after" ? extra : keyword) + " is not expected here; " + kForm);
        }
        rule.delay = parseNumber(seconds, "a delay in seconds");
        if (rule.delay < 0.0 || rule.delay > kLongestDelay) {
            throw BadInput(quoted(seconds) + " is out of range; expected a delay of 0 to 3600 seconds");
        }
    }
    return rule;
}

}  // namespace

AnswerRules readRules(std::istream& input, const std::string& name) {
    AnswerRules rules;
    readLines(input, name, [&](const std::string& text) {
        std::string line(withoutByteOrderMark(text));
        line.erase(std::min(line.find('#'), line.size()));
        if (line.find_first_not_of(" \t\r") != std::string::npos) {
            rules.push_back(readRule(line));
        }
    });
    return rules;
}

AnswerRules parkingRules() {
    std::istringstream text(kParkingRules);
    return readRules(text, "parking.rules");
}

void extendRules(AnswerRules& rules, const AnswerRules& more) {
    const auto replaced = [&](const AnswerRule& rule) {
        return std::any_of(more.begin(), more.end(), [&](const auto& other) { return other.setCode == rule.setCode; });
    };
    rules.erase(std::remove_if(rules.begin(), rules.end(), replaced), rules.end());
    rules.insert(rules.end(), more.begin(), more.end());
}

AnswerRules matchingRules(const AnswerRules& rules, std::uint32_t setCode, std::int32_t value) {
    AnswerRules matching;
    std::copy_if(rules.begin(), rules.end(), std::back_inserter(matching), [&](const AnswerRule& rule) {
        return rule.setCode == setCode && rule.setValue.value_or(value) == value;
    });
    return matching;
}

}  // namespace qvn::tools
