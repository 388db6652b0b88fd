#include "vehiclectl/PropertyState.h"

#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <utility>

#include "desk/Json.h"
#include "desk/MonotonicTime.h"
#include "desk/Number.h"
#include "desk/SignalNames.h"
#include "desk/SignalNotes.h"

namespace qvn::tools {
namespace {

using platform::vehicle::VehiclePropValue;

constexpr long kRestAfter = 3'000'000'000;  // without a change a property is active no longer

bool isSwitch(const VehiclePropValue& value) {
    return value.value.int32Values.size() == 2;
}

bool sameValue(const VehiclePropValue& a, const VehiclePropValue& b) {
    return a.value.int32Values == b.value.int32Values && a.value.floatValues == b.value.floatValues;
}

}  // namespace

std::optional<double> numberOf(const PropertyState& state) {
    return state.value ? numberOf(*state.value) : std::nullopt;
}

std::optional<double> numberOf(const VehiclePropValue& value) {
    const VehiclePropValue::RawValue& payload = value.value;
    if (!payload.floatValues.empty()) {
        return payload.floatValues.front();
    }
    if (!payload.int32Values.empty()) {
        return payload.int32Values.front();
    }
    return std::nullopt;
}

std::string valueText(const PropertyState& state) {
    const std::optional<double> number = numberOf(state);
    if (!number) {
        return "-";
    }
    if (isSwitch(*state.value)) {
        return formatNumber(*number) + " dir. " + std::to_string(state.value->value.int32Values[1]);
    }
    return valueWithNote(state.info->received.front(), *number);
}

const char* statusText(const PropertyState& state) {
    if (state.stale) {
        return "stale";
    }
    return state.timedOut ? "timed out" : "available";
}

std::string jsonText(const PropertyState& state) {
    const std::optional<double> number = numberOf(state);
    Json object;
    object["id"] = hexText(state.info->id);
    object["name"] = state.info->name;
    // The same digits as in a text: the value is a float, which would show as 4.050000190734863.
    object["value"] = jsonNumber(number ? formatNumber(*number) : "");
    if (state.value && isSwitch(*state.value)) {
        const std::int32_t direction = state.value->value.int32Values[1];
        object["direction"] = direction;
        object["switch"] = switchName(*state.info, direction);
    } else if (number) {
        const std::uint32_t code = state.info->received.front();
        if (const std::string& unit = SignalNotes::instance().of(code).unit; !unit.empty()) {
            object["unit"] = unit;
        }
        if (const std::string label = valueName(code, *number); !label.empty()) {
            object["label"] = label;
        }
    }
    object["status"] = statusText(state);
    object["timestamp"] = state.value ? state.value->timestamp : 0;
    return jsonText(object);
}

double ageOf(const PropertyState& state, long now) {
    if (!state.value || state.value->timestamp == 0) {
        return -1.0;
    }
    return static_cast<double>(now - state.value->timestamp) / kNanosecondsPerSecond;
}

std::string ageText(const PropertyState& state, long now, int digits) {
    const double age = ageOf(state, now);
    if (age < 0.0) {
        return "";
    }
    char text[32];
    std::snprintf(text, sizeof text, "%s%.*f s", state.first ? ">" : "", digits, age);
    return text;
}

PropertyStates::PropertyStates(const std::vector<const PropertyInfo*>& properties) {
    for (const PropertyInfo* const property : properties) {
        states_[static_cast<int>(property->id)].info = property;
    }
}

const PropertyState* PropertyStates::apply(Update update) {
    if (update.kind == Update::Kind::Service) {
        serviceChanged(update);
        return nullptr;
    }
    const auto found = states_.find(update.property);
    if (found == states_.end()) {
        return nullptr;
    }
    PropertyState& state = found->second;
    if (update.kind == Update::Kind::Status) {
        state.stale = state.stale && update.at <= lostAt_;
        return std::exchange(state.timedOut, !update.good) == update.good ? &state : nullptr;
    }
    const long received = update.value.timestamp;
    const long before = state.value ? state.value->timestamp : 0;
    if (received != 0 && received < before) {
        return nullptr;
    }
    if (received > before) {
        state.first = first_.take(update);
        if (!state.first) {
            state.arrivals.add(received);
        }
        state.stale = state.stale && received <= lostAt_;
    }
    if (state.value && sameValue(*state.value, update.value)) {
        state.value = std::move(update.value);
        return nullptr;
    }
    if (state.value && numberOf(state) != numberOf(update.value)) {
        state.activeSince = update.at - state.changedAt < kRestAfter ? state.activeSince : update.at;
        state.changedAt = update.at;
    }
    state.value = std::move(update.value);
    return &state;
}

void PropertyStates::serviceChanged(const Update& update) {
    service_ = {update.good, update.at};
    if (!update.good) {
        lostAt_ = update.at;
        first_.lose(update.at);
        for (auto& entry : states_) {
            entry.second.stale = entry.second.value.has_value();
        }
    }
}

bool PropertyStates::complete() const {
    return std::all_of(states_.begin(), states_.end(), [](const auto& entry) { return numberOf(entry.second); });
}

std::vector<int> PropertyStates::ids() const {
    std::vector<int> result;
    for (const auto& entry : states_) {
        result.push_back(entry.first);
    }
    return result;
}

}  // namespace qvn::tools
