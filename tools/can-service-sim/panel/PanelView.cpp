#include "can-service-sim/panel/PanelView.h"

#include <cmath>
#include <map>
#include <utility>

#include "desk/PhysicalValue.h"
#include "desk/SignalNames.h"
#include "desk/SignalNotes.h"
#include "tables/DecodingRules.h"
#include "tables/MessageCatalogue.h"

namespace qvn::tools {
namespace {

long long unixMilliseconds(std::chrono::system_clock::time_point time) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count();
}

double rounded(double seconds) {
    return std::round(seconds * 1e3) / 1e3;
}

/// The physical value as a number; null when bytes are missing.
Json valueOf(const tables::DecodingRow& row, const std::string& raw) {
    return jsonNumber(raw.size() < row.bytes ? "" : decodedText(row, raw));
}

Json describe(const tables::DecodingRow& row, const std::map<std::uint32_t, std::size_t>& places) {
    const SignalNote& note = SignalNotes::instance().of(row.code);
    Json signal = {{"name", signalName(row.code)}, {"message", nullptr}};
    if (const std::optional<std::uint32_t> message = messageOf(row.code)) {
        signal["message"] = places.at(*message);
    }
    signal["description"] = note.description;
    signal["unit"] = note.unit;
    signal["kind"] = kindText(row);
    signal["step"] = row.factor;
    signal["most"] = largestValue(row);
    if (note.range) {
        signal["range"] = {note.range->low, note.range->high};
    }
    if (!note.values.empty()) {
        Json& values = signal["values"] = Json::array();
        for (const auto& [number, name] : note.values) {
            values.push_back({number, name});
        }
    }
    return signal;
}

}  // namespace

PanelView::PanelView(const Player& player, std::string serviceName)
    : mPlayer(player),
      mServiceName(std::move(serviceName)),
      mToldValues(tables::kDecodingRules.size()),
      mToldTimeOuts(tables::kMessages.size()),
      mHistory(tables::kDecodingRules.size()) {}

Json PanelView::vehicle() const {
    Json vehicle = {{"version", QVN_VERSION},
                    {"service", mServiceName},
                    {"started", unixMilliseconds(mStarted)},
                    {"trace", mPlayer.progress().length > 0.0}};
    std::map<std::uint32_t, std::size_t> places;
    Json& messages = vehicle["messages"] = Json::array();
    for (const tables::MessageRow& row : tables::kMessages) {
        places[row.code] = messages.size();
        messages.push_back(signalName(row.code));
    }
    Json& signals = vehicle["signals"] = Json::array();
    for (const tables::DecodingRow& row : tables::kDecodingRules) {
        signals.push_back(describe(row, places));
    }
    return vehicle;
}

Json PanelView::everything() {
    Json state = {{"t", rounded(elapsed(Clock::now()))}};
    addValues(state, true);
    addMessages(state, true);
    addVehicleState(state, true);
    state["samples"] = mHistory.size();
    state["history"] = mHistory.moved();
    state["log"] = mLog.since(0);
    return state;
}

Json PanelView::changes() {
    Json state = {{"t", rounded(elapsed(Clock::now()))}};
    addValues(state, false);
    addMessages(state, false);
    addVehicleState(state, false);
    if (mToldEvents < mLog.last()) {
        state["log"] = mLog.since(std::exchange(mToldEvents, mLog.last()));
    }
    return state;
}

void PanelView::note(const Json& event) {
    Json entry = event;
    entry["t"] = rounded(elapsed(Clock::now()));
    mLog.add(std::move(entry));
}

void PanelView::sample() {
    mHistory.add([this](std::size_t place) {
        const tables::DecodingRow& row = tables::kDecodingRules[place];
        const std::optional<CanService::Value> value = mPlayer.service().signal(row.code);
        return value ? valueOf(row, value->raw) : Json();
    });
}

double PanelView::elapsed(Clock::time_point time) const {
    return std::chrono::duration<double>(time - mStart).count();
}

void PanelView::addValues(Json& state, bool all) {
    Json values = Json::array();
    for (std::size_t place = 0; place < mToldValues.size(); ++place) {
        const tables::DecodingRow& row = tables::kDecodingRules[place];
        const std::optional<CanService::Value> value = mPlayer.service().signal(row.code);
        if (!value || (!all && value->time == mToldValues[place])) {
            continue;
        }
        Json entry = {place, valueOf(row, value->raw)};
        if (value->time) {
            entry.push_back(rounded(elapsed(*value->time)));
        }
        values.push_back(std::move(entry));
        if (!all) {
            mToldValues[place] = value->time;
        }
    }
    if (!values.empty()) {
        state["values"] = std::move(values);
    }
}

void PanelView::addMessages(Json& state, bool all) {
    Json messages = Json::array();
    for (std::size_t place = 0; place < mToldTimeOuts.size(); ++place) {
        const bool timedOut = mPlayer.service().isTimedOut(tables::kMessages[place].code);
        if (all || timedOut != mToldTimeOuts[place]) {
            messages.push_back({place, timedOut});
        }
        if (!all) {
            mToldTimeOuts[place] = timedOut;
        }
    }
    if (!messages.empty()) {
        state["messages"] = std::move(messages);
    }
}

void PanelView::addVehicleState(Json& state, bool all) {
    const Player::Progress progress = mPlayer.progress();
    Json now = {{"service", mPlayer.service().isUp()},
                {"reverse", mPlayer.reverse().value_or(false)},
                {"trace",
                 {{"position", rounded(progress.position)},
                  {"length", progress.length},
                  {"speed", progress.speed},
                  {"paused", progress.paused}}},
                {"clients", Json::array()},
                {"faults", Json::object()}};
    for (const CanService::Client& client : mPlayer.service().clients()) {
        now["clients"].push_back({{"id", client.id}, {"since", unixMilliseconds(client.since)}});
    }
    for (const auto& [code, fault] : mPlayer.faults().describe()) {
        now["faults"][signalName(code)] = fault;
    }
    for (const auto& [name, value] : now.items()) {
        if (all || !mToldState.contains(name) || mToldState[name] != value) {
            state[name] = value;
        }
    }
    if (!all) {
        mToldState = std::move(now);
    }
}

}  // namespace qvn::tools
