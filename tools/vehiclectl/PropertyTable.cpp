#include "vehiclectl/PropertyTable.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <nlohmann/json.hpp>

#include "desk/Json.h"
#include "desk/MonotonicTime.h"
#include "desk/Number.h"
#include "desk/SignalNames.h"
#include "desk/SignalNotes.h"

namespace qvn::tools {

using platform::vehicle::Reception;
using platform::vehicle::ValueOrigin;

namespace {

bool isSwitch(const PropertyState& state) {
    return state.direction != 0;
}

bool isOfReverseLine(const PropertyState& state) {
    return state.origin == ValueOrigin::ReverseLine;
}

bool isTimedOut(const PropertyState& state) {
    return state.reception == Reception::TimedOut;
}

bool sameValue(const PropertyState& a, const PropertyState& b) {
    return a.direction == b.direction && (a.payload == b.payload || (!a.hasValue() && !b.hasValue()));
}

}  // namespace

std::string valueText(const PropertyInfo& property, const PropertyState& state) {
    if (!state.hasValue()) {
        return "-";
    }
    if (isSwitch(state)) {
        return formatNumber(state.payload) + " dir. " + std::to_string(state.direction);
    }
    return valueWithNote(property.received.front(), state.payload);
}

const char* statusText(const PropertyState& state) {
    if (state.reception == Reception::ServiceAway) {
        return "stale";
    }
    return isTimedOut(state) ? "timed out" : "available";
}

std::string jsonText(const PropertyRow& row) {
    const PropertyState& state = row.state;
    Json object;
    object["id"] = hexText(row.info->id);
    object["name"] = row.info->name;
    // The same digits as in a text: the value is a float, which would show as 4.050000190734863.
    object["value"] = jsonNumber(state.hasValue() ? formatNumber(state.payload) : "");
    if (isSwitch(state)) {
        object["direction"] = state.direction;
        object["switch"] = switchName(*row.info, state.direction);
    } else if (state.hasValue()) {
        const std::uint32_t code = row.info->received.front();
        if (const std::string& unit = SignalNotes::instance().of(code).unit; !unit.empty()) {
            object["unit"] = unit;
        }
        if (const std::string label = valueName(code, state.payload); !label.empty()) {
            object["label"] = label;
        }
    }
    object["status"] = statusText(state);
    object["timestamp"] = state.timestamp;
    return jsonText(object);
}

std::string ageText(const PropertyRow& row, long now, int digits) {
    if (row.state.timestamp == 0) {
        return "";
    }
    char text[32];
    std::snprintf(text, sizeof text, "%s%.*f s", row.first ? ">" : "", digits,
                  static_cast<double>(now - row.state.timestamp) / kNanosecondsPerSecond);
    return text;
}

PropertyState withoutReverseLine(PropertyState state) {
    if (isOfReverseLine(state)) {
        state.payload = std::numeric_limits<double>::quiet_NaN();
        state.timestamp = 0;
        state.reception = isTimedOut(state) ? Reception::TimedOut : Reception::NeverReceived;
    }
    return state;
}

PropertyTable::PropertyTable(const std::vector<const PropertyInfo*>& properties) {
    for (const PropertyInfo* const property : properties) {
        mRows[static_cast<int>(property->id)].info = property;
    }
}

News PropertyTable::apply(const PropertyState& update) {
    PropertyRow& row = mRows.at(update.property);
    const PropertyState before = row.state;
    row.state = update;
    News news;
    if (update.reception == Reception::ServiceAway) {
        mHeard[update.property].clear();
        return news;
    }
    if (update.timestamp > before.timestamp) {
        row.first = isFirst(update);
        news.repeated = !row.first;
        if (news.repeated) {
            row.arrivals.add(update.timestamp);
        }
    }
    if (before.hasValue() && before.payload != update.payload) {
        const bool goesOn = update.timestamp - row.changedAt < kActiveFor;
        row.activeSince = goesOn ? row.activeSince : update.timestamp;
        row.changedAt = update.timestamp;
    }
    news.changed = !sameValue(before, update) || isTimedOut(before) != isTimedOut(update);
    return news;
}

/// The service has had it for long, maybe: its values all come when a client connects, of every switch one.
bool PropertyTable::isFirst(const PropertyState& value) {
    constexpr int kReverseLine = -1;
    return mHeard[value.property].insert(isOfReverseLine(value) ? kReverseLine : value.direction).second;
}

bool PropertyTable::complete() const {
    return std::all_of(mRows.begin(), mRows.end(), [](const auto& entry) { return entry.second.state.hasValue(); });
}

}  // namespace qvn::tools
