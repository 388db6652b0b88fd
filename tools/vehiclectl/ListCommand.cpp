#include <string>

#include "desk/ExitCode.h"
#include "desk/Number.h"
#include "desk/PropertyNames.h"
#include "desk/SignalNames.h"
#include "vehiclectl/Commands.h"

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

std::string joined(const PropertyInfo& property, const std::string& separator) {
    std::string text;
    for (const auto* codes : {&property.received, &property.settable}) {
        for (const std::uint32_t code : *codes) {
            text += (text.empty() ? "" : separator) + signalName(code);
        }
    }
    return text;
}

}  // namespace

int listCommand(const ListOptions& options, Output& output) {
    for (const PropertyInfo& property : properties()) {
        const std::string id = hexText(property.id);
        if (options.json) {
            output.print(R"({"id":"%s","type":"%s","direction":"%s","signals":["%s"]})"
                         "\n",
                         id.c_str(), typeText(property), directionText(property), joined(property, "\",\"").c_str());
        } else {
            output.print("%s  %-5s  %-7s  %s\n", id.c_str(), typeText(property), directionText(property),
                         joined(property, " ").c_str());
        }
    }
    return kDone;
}

}  // namespace qvn::tools
