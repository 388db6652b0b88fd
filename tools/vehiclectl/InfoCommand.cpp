#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "desk/ExitCode.h"
#include "desk/Json.h"
#include "desk/Number.h"
#include "desk/PhysicalValue.h"
#include "desk/PropertyNames.h"
#include "desk/SignalNames.h"
#include "desk/SignalNotes.h"
#include "vehiclectl/Commands.h"
#include "vehiclectl/CommonOptions.h"

namespace qvn::tools {
namespace {

struct InfoOptions {
    std::vector<std::string> properties;
    bool json = false;
};

/// What is known of one signal of a property.
Json describe(std::uint32_t code) {
    Json object;
    object["signal"] = signalName(code);
    object["code"] = hexText(code);
    if (const tables::SetRow* const row = tables::findSetSignal(code)) {
        const tables::SetRange range = setRange(*row);
        object["direction"] = "set";
        object["range"] = {range.low, range.high};
        object["bytes"] = row->bytes;
    } else if (const tables::DecodingRow* const rule = tables::findDecodingRule(code)) {
        object["direction"] = "get";
        object["kind"] = kindText(*rule);
        object["range"] = {0, jsonNumber(formatNumber(largestValue(*rule)))};
        object["bytes"] = rule->bytes;
        if (const auto message = messageOf(code)) {
            object["message"] = signalName(*message);
        }
    }
    const SignalNote& note = SignalNotes::instance().of(code);
    if (!note.description.empty()) {
        object["description"] = note.description;
    }
    if (!note.unit.empty()) {
        object["unit"] = note.unit;
    }
    for (const auto& [number, name] : note.values) {
        object["values"][std::to_string(number)] = name;
    }
    return object;
}

std::string textOf(const Json& value) {
    if (value.is_string()) {
        return value.get<std::string>();
    }
    if (value.is_array()) {
        return jsonText(value[0]) + " to " + jsonText(value[1]);
    }
    if (!value.is_object()) {
        return jsonText(value);
    }
    std::string text;
    for (const auto& [number, name] : value.items()) {
        text += (text.empty() ? "" : ", ") + number + " " + name.get<std::string>();
    }
    return text;
}

int runInfo(const InfoOptions& options, Output& output) {
    std::vector<const PropertyInfo*> wanted;
    for (const std::string& name : options.properties) {
        wanted.push_back(&propertyNamed(name));
    }
    for (const PropertyInfo* const property : wanted) {
        Json object;
        object["id"] = hexText(property->id);
        object["name"] = property->name;
        object["type"] = property->type == platform::vehicle::PROPERTY_TYPE_FLOAT ? "float" : "int32";
        for (const auto* codes : {&property->received, &property->settable}) {
            for (const std::uint32_t code : *codes) {
                object["signals"].push_back(describe(code));
            }
        }
        if (options.json) {
            output.write(jsonText(object) + "\n");
            continue;
        }
        output.print("%s  %s  %s\n", property->name.c_str(), hexText(property->id).c_str(),
                     object["type"].get<std::string>().c_str());
        for (const Json& signal : object["signals"]) {
            for (const auto& [key, value] : signal.items()) {
                output.print("%s%-12s %s\n", key == "signal" ? "  " : "    ", key.c_str(), textOf(value).c_str());
            }
        }
    }
    return kDone;
}

}  // namespace

Run declareInfo(CommandLine& line) {
    const auto options = std::make_shared<InfoOptions>();
    line.option("PROPERTY", options->properties, "");
    addJson(line, options->json);
    return [options](const StopSignals&, Output& output) { return runInfo(*options, output); };
}

}  // namespace qvn::tools
