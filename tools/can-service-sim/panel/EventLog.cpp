#include "can-service-sim/panel/EventLog.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

namespace qvn::tools {
namespace {

constexpr std::size_t kMostOfAKind = 300;

}  // namespace

void EventLog::add(Json event) {
    event["n"] = ++mLast;
    const std::string kind = event["event"];
    const bool ofSet = kind == "set" || kind == "ignored set" || kind == "answer" || kind == "no answer";
    std::deque<Json>& log = ofSet ? mOfSets : mOthers;
    log.push_back(std::move(event));
    if (log.size() > kMostOfAKind) {
        log.pop_front();
    }
}

Json EventLog::since(std::size_t number) const {
    Json events = Json::array();
    for (const std::deque<Json>* const log : {&mOfSets, &mOthers}) {
        std::copy_if(log->begin(), log->end(), std::back_inserter(events),
                     [&](const Json& event) { return event["n"] > number; });
    }
    return events;
}

}  // namespace qvn::tools
