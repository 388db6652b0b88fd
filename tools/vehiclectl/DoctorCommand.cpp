#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "desk/BadInput.h"
#include "desk/DeskPlatform.h"
#include "desk/ExitCode.h"
#include "desk/Number.h"
#include "desk/PropertyNames.h"
#include "desk/Text.h"
#include "gpioport/gpioport_client.h"
#include "ipc_common_soc/ReverseLine.h"
#include "ipc_common_soc/ServiceName.h"
#include "psis/psis_client.h"
#include "vehiclectl/Commands.h"

namespace qvn::tools {
namespace {

const char* valueOf(const char* variable) {
    const char* const value = std::getenv(variable);
    return value && *value ? value : nullptr;
}

Finding examineVariant() {
    if (psisInitClient() != 0) {
        return {Finding::Wrong, "variant", "the vehicle's configuration cannot be read",
                "mend the file that the log names; without one, a vehicle with automatic parking is taken"};
    }
    std::string text;
    for (const char* const key : {"OMNIVIEW_SYSTEM_VEHICLE_CONFIGURATION_INFORMATION", "REVERSE_VIDEO"}) {
        unsigned char value = 0;
        const bool known = psisReadKey("config_qvn", key, -1, &value, sizeof value) == 0;
        text += (text.empty() ? "" : ", ") + std::string(key) + " " + (known ? std::to_string(value) : "not set");
    }
    return {Finding::Good, "variant", text, ""};
}

Finding examineReverseLine() {
    const std::string name = "reverse line " + std::to_string(wire::kReverseLine);
    const int level = gpioport_get_inout_value(wire::kReverseLine);
    if (level < 0) {
        return {Finding::Wrong, "reverse line", name + " cannot be read",
                "its file holds 0 or 1; 'reverse=0' on the input of can-service-sim writes it anew"};
    }
    return {Finding::Good, "reverse line", name + (level == 0 ? ": engaged" : ": released"), ""};
}

Finding examineLog() {
    const char* const level = valueOf("QVN_LOG_LEVEL");
    const char* const file = valueOf("QVN_LOG_FILE");
    std::string text = std::string("level ") + (level ? level : "1") + " to " + (file ? file : "standard error");
    if (level && (std::string(level).size() != 1 || level[0] < '0' || level[0] > '5')) {
        return {Finding::Wrong, "log", "QVN_LOG_LEVEL is " + quoted(level), "set it to a number from 0 to 5"};
    }
    return {Finding::Good, "log", text + (level ? "" : " (QVN_LOG_LEVEL is not set)"), ""};
}

/// Whether a client that subscribes this property ever hears of it. The client itself says nothing when it does not.
Finding examineSubscription(const std::string& name) {
    try {
        const PropertyInfo& property = propertyNamed(name);
        if (property.received.empty()) {
            return {Finding::Wrong, "subscription", property.name + " can only be set; the vehicle never reports it",
                    "subscribe the property that reports the effect"};
        }
        return {Finding::Good, "subscription", property.name + " " + hexText(property.id), ""};
    } catch (const BadInput& error) {
        return {Finding::Wrong, "subscription", error.what(),
                "take the names of <vehicle/PropertyIds.h>: a wrong one does not compile"};
    }
}

void examineSubscriptions(const std::vector<std::string>& names, std::vector<Finding>& findings) {
    const auto first = static_cast<std::ptrdiff_t>(findings.size());
    std::transform(names.begin(), names.end(), std::back_inserter(findings), examineSubscription);
    const auto isWrong = [](const Finding& finding) { return finding.state == Finding::Wrong; };
    if (!names.empty() && std::all_of(findings.begin() + first, findings.end(), isWrong)) {
        findings.push_back({Finding::Wrong, "subscription", "a client of these subscribes nothing that it can receive",
                            "'vehiclectl list' shows what the vehicle reports as 'get'"});
    }
}

int runDoctor(const std::vector<std::string>& properties, Output& output) {
    std::vector<Finding> findings = examineDesk(wire::kServiceName);
    findings.push_back(examineVariant());
    findings.push_back(examineReverseLine());
    findings.push_back(examineLog());
    examineSubscriptions(properties, findings);
    bool healthy = true;
    for (const Finding& finding : findings) {
        const bool good = finding.state == Finding::Good;
        output.print("%-5s  %-18s  %s\n", good ? "ok" : "WRONG", finding.what.c_str(), finding.text.c_str());
        if (!good) {
            output.print("%27s-> %s\n", "", finding.remedy.c_str());
        }
        healthy = healthy && good;
    }
    return healthy ? kDone : kFailed;
}

}  // namespace

Run declareDoctor(CommandLine& line) {
    const auto properties = std::make_shared<std::vector<std::string>>();
    line.option("[PROPERTY]", *properties, "What the application subscribes: is it ever reported?");
    return [properties](const StopSignals&, Output& output) { return runDoctor(*properties, output); };
}

}  // namespace qvn::tools
