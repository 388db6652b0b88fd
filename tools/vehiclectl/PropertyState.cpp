#include "vehiclectl/PropertyState.h"

#include <algorithm>
#include <ctime>
#include <nlohmann/json.hpp>
#include <utility>

#include "desk/Number.h"
#include "desk/SignalNames.h"

namespace qvn::tools {
namespace {

using platform::vehicle::VehiclePropValue;

constexpr double kNanosecondsPerSecond = 1e9;

bool isSwitch(const VehiclePropValue& value) {
    return value.value.int32Values.size() == 2;
}

bool sameValue(const VehiclePropValue& a, const VehiclePropValue& b) {
    return a.value.int32Values == b.value.int32Values && a.value.floatValues == b.value.floatValues;
}

}  // namespace

std::optional<double> numberOf(const PropertyState& state) {
    if (!state.value) {
        return std::nullopt;
    }
    const VehiclePropValue::RawValue& payload = state.value->value;
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
    std::string text = formatNumber(*number);
    if (isSwitch(*state.value)) {
        text += " direction " + std::to_string(state.value->value.int32Values[1]);
    }
    return text;
}

const char* statusText(const PropertyState& state) {
    return state.timedOut ? "timed out" : "available";
}

std::string jsonText(const PropertyState& state) {
    using Json = nlohmann::ordered_json;
    const std::optional<double> number = numberOf(state);
    Json object;
    object["id"] = hexText(state.info->id);
    object["name"] = state.info->name;
    // The same digits as in a text: the value is a float, which would show as 4.050000190734863.
    object["value"] = Json::parse(number ? formatNumber(*number) : "null");
    if (state.value && isSwitch(*state.value)) {
        const std::int32_t direction = state.value->value.int32Values[1];
        object["direction"] = direction;
        object["switch"] = switchName(*state.info, direction);
    }
    object["status"] = statusText(state);
    object["timestamp"] = state.value ? state.value->timestamp : 0;
    return object.dump();
}

double ageOf(const PropertyState& state, long now) {
    if (!state.value || state.value->timestamp == 0) {
        return -1.0;
    }
    return static_cast<double>(now - state.value->timestamp) / kNanosecondsPerSecond;
}

long monotonicNow() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1'000'000'000L + now.tv_nsec;
}

PropertyStates::PropertyStates(const std::vector<const PropertyInfo*>& properties) {
    for (const PropertyInfo* const property : properties) {
        states_[static_cast<int>(property->id)].info = property;
    }
}

const PropertyState* PropertyStates::apply(Update update) {
    const auto found = states_.find(update.property);
    if (found == states_.end()) {
        return nullptr;
    }
    PropertyState& state = found->second;
    bool changed = false;
    if (update.kind == Update::Kind::Status) {
        const bool timedOut = update.status != platform::vehicle::VEHICLE_PROPERTY_STATUS_AVAILABLE;
        changed = timedOut != state.timedOut;
        state.timedOut = timedOut;
    } else {
        if (state.value && update.value.timestamp != 0 && update.value.timestamp < state.value->timestamp) {
            return nullptr;
        }
        changed = !state.value || !sameValue(*state.value, update.value);
        state.value = std::move(update.value);
    }
    if (!changed) {
        return nullptr;
    }
    state.changedAt = monotonicNow();
    return &state;
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
