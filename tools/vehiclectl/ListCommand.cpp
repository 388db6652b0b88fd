#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "desk/ExitCode.h"
#include "desk/Json.h"
#include "desk/Number.h"
#include "desk/PropertyNames.h"
#include "desk/SignalNames.h"
#include "desk/SignalNotes.h"
#include "vehiclectl/Commands.h"
#include "vehiclectl/CommonOptions.h"

namespace qvn::tools {
namespace {

const char* typeText(const PropertyInfo& property) {
    return property.type == platform::vehicle::PROPERTY_TYPE_FLOAT ? "float" : "int32";
}

const char* directionText(const PropertyInfo& property) {
    if (property.settable.empty()) {
        return "get";
    }
    return property.received.empty() ? "set" : "get/set";
}

std::vector<std::string> signalsOf(const PropertyInfo& property) {
    std::vector<std::string> names;
    for (const auto* codes : {&property.received, &property.settable}) {
        for (const std::uint32_t code : *codes) {
            names.push_back(signalName(code));
        }
    }
    return names;
}

Json describe(const PropertyInfo& property) {
    Json object;
    object["id"] = hexText(property.id);
    object["type"] = typeText(property);
    object["direction"] = directionText(property);
    object["signals"] = signalsOf(property);
    const auto& codes = property.received.empty() ? property.settable : property.received;
    const SignalNote& note = SignalNotes::instance().of(codes.front());
    if (codes.size() == 1 && !note.unit.empty()) {
        object["unit"] = note.unit;
    }
    if (codes.size() == 1 && !note.description.empty()) {
        object["description"] = note.description;
    }
    return object;
}

std::string plainText(const PropertyInfo& property) {
    std::string signals;
    for (const std::string& name : signalsOf(property)) {
        signals += (signals.empty() ? "" : " ") + name;
    }
    char columns[64];
    std::snprintf(columns, sizeof columns, "%s  %-5s  %-7s  ", hexText(property.id).c_str(), typeText(property),
                  directionText(property));
    return columns + signals;
}

int runList(bool json, Output& output) {
    for (const PropertyInfo& property : properties()) {
        output.write((json ? jsonText(describe(property)) : plainText(property)) + "\n");
    }
    return kDone;
}

}  // namespace

Run declareList(CommandLine& line) {
    const auto json = std::make_shared<bool>(false);
    addJson(line, *json);
    return [json](const StopSignals&, Output& output) { return runList(*json, output); };
}

}  // namespace qvn::tools
