#include "can-service-sim/can/CanDecoder.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "dbc/Values.h"
#include "desk/BadInput.h"
#include "desk/PhysicalValue.h"
#include "desk/SignalNames.h"

namespace qvn::tools {
namespace {

// A desk's computer may be busy with something else for some tens of milliseconds: no message is called late sooner
// than after 100 ms, which are five of these.
constexpr double kShortestCycle = 0.02;

/// The rule of the schema's signal of this name, or null.
const tables::DecodingRow* ruleOf(const std::string& name) {
    static const auto* const kRules = [] {
        auto* const rules = new std::map<std::string, const tables::DecodingRow*>;
        for (const tables::DecodingRow& row : tables::kDecodingRules) {
            rules->emplace(signalName(row.code), &row);
        }
        return rules;
    }();
    const auto found = kRules->find(std::string(withoutPrefix(name)));
    return found == kRules->end() ? nullptr : found->second;
}

/// A whole number may come out of factor and offset a little beside it.
double wholeIfNear(double value) {
    const double whole = std::round(value);
    return std::abs(value - whole) <= 1e-9 * std::max(1.0, std::abs(value)) ? whole : value;
}

std::string titleOf(const dbc::Message& message) {
    return "BO_ " + std::to_string(message.id) + (message.extended ? " (extended) " : " ") + message.name;
}

}  // namespace

CanDecoder::CanDecoder(dbc::Database database) : mDatabase(std::move(database)) {
    for (const dbc::Message& message : mDatabase.messages) {
        know(message);
    }
}

void CanDecoder::know(const dbc::Message& message) {
    KnownMessage known;
    known.layout = &message;
    known.period = message.cycleTime ? std::max(*message.cycleTime, kShortestCycle) : 0.0;
    for (const dbc::Signal& signal : message.signals) {
        const tables::DecodingRow* const row = ruleOf(signal.name);
        if (!row) {
            continue;
        }
        known.signals.push_back({&signal, row, {}});
        const auto carrier = messageOf(row->code);
        if (carrier && std::find(known.messages.begin(), known.messages.end(), *carrier) == known.messages.end()) {
            known.messages.push_back(*carrier);
        }
    }
    if (!known.signals.empty()) {
        mMessages.emplace(keyOf(message.id, message.extended), std::move(known));
    }
}

std::size_t CanDecoder::signals() const {
    std::size_t count = 0;
    for (const dbc::Message& message : mDatabase.messages) {
        count += message.signals.size();
    }
    return count;
}

std::size_t CanDecoder::knownSignals() const {
    std::size_t count = 0;
    for (const auto& [key, message] : mMessages) {
        count += message.signals.size();
    }
    return count;
}

std::vector<std::string> CanDecoder::unknownSignals() const {
    std::vector<std::string> lines;
    for (const dbc::Message& message : mDatabase.messages) {
        std::string names;
        for (const dbc::Signal& signal : message.signals) {
            names += ruleOf(signal.name) ? "" : (names.empty() ? ": " : ", ") + signal.name;
        }
        if (!names.empty()) {
            lines.push_back(titleOf(message) + names);
        }
    }
    return lines;
}

std::vector<std::uint32_t> CanDecoder::signalsIn(const CanFrame& frame) const {
    std::vector<std::uint32_t> signals;
    if (const auto found = mMessages.find(keyOf(frame.id, frame.extended)); found != mMessages.end()) {
        for (const KnownSignal& signal : found->second.signals) {
            signals.push_back(signal.row->code);
        }
    }
    return signals;
}

void CanDecoder::forgetValues() {
    for (auto& [key, message] : mMessages) {
        for (KnownSignal& signal : message.signals) {
            signal.last.clear();
        }
    }
}

DecodedFrame CanDecoder::decode(const CanFrame& frame) {
    DecodedFrame result;
    const auto found = mMessages.find(keyOf(frame.id, frame.extended));
    if (found == mMessages.end()) {
        return result;
    }
    KnownMessage& message = found->second;
    result.messages = message.messages;
    result.period = message.period;
    for (KnownSignal& signal : message.signals) {
        if (dbc::isPresent(*message.layout, *signal.layout, frame.payload)) {
            decode(signal, frame, result);
        }
    }
    return result;
}

void CanDecoder::decode(KnownSignal& signal, const CanFrame& frame, DecodedFrame& result) {
    try {
        const auto value = dbc::physicalValue(*signal.layout, frame.payload);
        if (!value) {
            throw BadInput("a frame of " + std::to_string(frame.payload.size()) + " bytes is too short for it");
        }
        std::string raw = encodePhysical(*signal.row, wholeIfNear(*value));
        result.values.push_back({signal.row->code, raw, raw != signal.last});
        signal.last = std::move(raw);
    } catch (const BadInput& error) {
        if (!std::exchange(signal.complained, true)) {
            result.complaints.push_back("signal " + signalName(signal.row->code) +
                                        " of the CAN bus is left out: " + error.what() + "; this is told once");
        }
    }
}

}  // namespace qvn::tools
