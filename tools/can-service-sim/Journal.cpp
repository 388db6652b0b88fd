#include "can-service-sim/Journal.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "can-service-sim/trace/TraceCommands.h"
#include "desk/Number.h"
#include "desk/PhysicalValue.h"
#include "desk/SignalNames.h"
#include "desk/SignalNotes.h"
#include "desk/Text.h"

namespace qvn::tools {
namespace {

/// The physical value of a signal's bytes as text; empty when there is none.
std::string physicalText(std::uint32_t code, const std::string& raw) {
    const tables::DecodingRow* const row = tables::findDecodingRule(code);
    return row && raw.size() >= row->bytes ? decodedText(*row, raw) : "";
}

std::string valueText(std::uint32_t code, const std::string& raw) {
    const std::string value = physicalText(code, raw);
    if (value.empty()) {
        const bool known = tables::findDecodingRule(code) != nullptr;
        return signalName(code) + (known ? "=(too short)" : "#" + hexBytes(raw));
    }
    const std::string name = valueName(code, std::strtod(value.c_str(), nullptr));
    return signalName(code) + "=" + value + (name.empty() ? "" : " " + name);
}

void addValue(Json& object, std::uint32_t code, const std::string& raw) {
    const std::string value = physicalText(code, raw);
    object["signal"] = signalName(code);
    object["value"] = jsonNumber(value);
    object["raw"] = hexBytes(raw);
    if (const std::string name = valueName(code, std::strtod(value.c_str(), nullptr));
        !value.empty() && !name.empty()) {
        object["label"] = name;
    }
}

}  // namespace

void Journal::service(bool up) const {
    tell(Detail::Normal, "service", up ? "service up" : "service down", [&](Json& object) { object["up"] = up; });
}

void Journal::message(std::uint32_t code, bool timedOut) const {
    tell(Detail::Normal, "message", signalName(code) + (timedOut ? " timed out" : " ok"), [&](Json& object) {
        object["message"] = signalName(code);
        object["ok"] = !timedOut;
    });
}

void Journal::reverse(bool engaged) const {
    tell(Detail::Normal, "reverse", engaged ? "reverse engaged" : "reverse released",
         [&](Json& object) { object["engaged"] = engaged; });
}

void Journal::fault(const FaultEvent& fault) const {
    const TraceCommand& command = traceCommand(fault.kind);
    const std::string text = signalName(fault.code) + " " + command.sentence;
    tell(Detail::Normal, "fault", text + (command.takesSeconds() ? " " + formatNumber(fault.seconds) + " s" : ""),
         [&](Json& object) {
             // The rest stays in a row, as scripts look for it.
             object = {{"t", object["t"]},
                       {"command", command.word},
                       {"event", "fault"},
                       {"of", signalName(fault.code)},
                       {"fault", command.sentence}};
             if (command.takesSeconds()) {
                 object["seconds"] = fault.seconds;
             }
         });
}

void Journal::set(std::size_t set, std::uint32_t code, std::int32_t value, const std::string& raw,
                  std::size_t answers) const {
    const std::string text = "set " + signalName(code) + "=" + std::to_string(value) + "  (" + hexBytes(raw) + ")";
    tell(Detail::Normal, "set", text, [&](Json& object) {
        object["signal"] = signalName(code);
        object["value"] = value;
        object["raw"] = hexBytes(raw);
        object["set"] = set;
        object["answers"] = answers;
    });
}

void Journal::ignoredSet(std::uint32_t code, const std::string& raw, const std::string& reason) const {
    const std::string text = "set " + signalName(code) + " (" + hexBytes(raw) + ") ignored: " + reason;
    tell(Detail::Normal, "ignored set", text, [&](Json& object) {
        object["signal"] = signalName(code);
        object["raw"] = hexBytes(raw);
        object["reason"] = reason;
    });
}

void Journal::answer(std::size_t set, std::uint32_t code, const std::string& raw) const {
    tell(Detail::Normal, "answer", "answer " + valueText(code, raw), [&](Json& object) {
        addValue(object, code, raw);
        object["set"] = set;
    });
}

void Journal::remark(Detail least, const std::string& text) const {
    tell(least, "note", text, [&](Json& object) { object["text"] = text; });
}

void Journal::signal(std::uint32_t code, const std::string& raw) const {
    if (mDetail == Detail::All) {  // a full trace has thousands a second
        tell(Detail::All, "signal", valueText(code, raw), [&](Json& object) { addValue(object, code, raw); });
    }
}

void Journal::stops(std::uint32_t code) const {
    tell(Detail::All, "stop", signalName(code) + " stops", [&](Json& object) { object["signal"] = signalName(code); });
}

void Journal::subscribed(std::size_t codes, std::size_t known) const {
    const std::string text = "a client subscribed " + std::to_string(codes) + " codes";
    tell(known > 0 ? Detail::All : Detail::Normal, "subscribed",
         text + (known > 0 ? "" : ", none of which is a signal or message here: it will receive nothing"),
         [&](Json& object) {
             object["codes"] = codes;
             object["known"] = known;
         });
}

void Journal::error(const std::string& text) {
    std::fprintf(stderr, "can-service-sim: %s\n", text.c_str());
}

void Journal::noAnswer(std::size_t set, const std::string& reason) const {
    error(reason);
    if (mListener) {
        mListener(object("no answer", [&](Json& event) {
            event["set"] = set;
            event["reason"] = reason;
        }));
    }
}

void Journal::tell(Detail least, const char* event, const std::string& text,
                   const std::function<void(Json& object)>& fields) const {
    if (mDetail >= least && mForm == Form::Lines) {
        char time[32];
        std::snprintf(time, sizeof time, "%9.3f  ", elapsed());
        mWrite(time + text + "\n");
    } else if (mDetail >= least) {
        mWrite(jsonText(object(event, fields)) + "\n");
    }
    if (mListener && least <= Detail::Normal) {
        mListener(object(event, fields));
    }
}

Json Journal::object(const char* event, const std::function<void(Json& object)>& fields) const {
    Json object = {{"t", std::round(elapsed() * 1e6) / 1e6}, {"event", event}};
    fields(object);
    return object;
}

}  // namespace qvn::tools
