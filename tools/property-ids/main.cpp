// Prints include/vehicle/PropertyIds.h from the tables.

#include <cstdio>
#include <set>
#include <string>

#include "common.base.canservice.pb.h"
#include "tables/DecodingRules.h"
#include "tables/MessageCatalogue.h"
#include "tables/SetCatalogue.h"
#include "tables/SignalTable.h"

namespace {

constexpr char kHead[] = R"(// Made from the tables by scripts/generate; do not edit.
#ifndef VEHICLE_PROPERTY_IDS_H
#define VEHICLE_PROPERTY_IDS_H

#include <vehicle/VehicleProperty.h>

namespace qvn {
namespace platform {
namespace vehicle {

/// The identifier of every property, under the name of each signal that feeds it or is set by it. The remark tells
/// where the payload lies, its unit, and the CAN message. The five steering-wheel switches of CSA3 share one property.
namespace ids {

// One signal's own name has two underscores in a row.
// NOLINTBEGIN(bugprone-reserved-identifier)
// clang-format off
)";

constexpr char kTail[] = R"(
// clang-format on
// NOLINTEND(bugprone-reserved-identifier)

}  // namespace ids

/// The property that a signal of this name ("ESP_FD2_VehSpd") feeds or is set by; 0 for an unknown name.
QVN_VEHICLE_API int propertyId(const char* signal);

/// The name of the first signal of a property, valid for ever; null for an unknown identifier.
QVN_VEHICLE_API const char* propertyName(int id);

}  // namespace vehicle
}  // namespace platform
}  // namespace qvn

#endif  // VEHICLE_PROPERTY_IDS_H
)";

std::string nameOf(std::uint32_t code) {
    return can_service::CodeIdEnum_Name(static_cast<can_service::CodeIdEnum>(code)).substr(sizeof("QVN_GET_") - 1);
}

std::string receivedIn(std::uint32_t code) {
    for (const qvn::tables::MessageRow& message : qvn::tables::kMessages) {
        for (const SignalListRow& signal : message.signals) {
            if (signal.code_id == code) {
                return nameOf(message.code);
            }
        }
    }
    return "";
}

std::string remark(const VehilceClientInfo& row) {
    using qvn::platform::vehicle::PROPERTY_TYPE_FLOAT;
    std::string text = row.propertyType == PROPERTY_TYPE_FLOAT ? "floatValues" : "int32Values";
    const qvn::tables::DecodingRow* const rule = qvn::tables::findDecodingRule(row.codeId);
    if (rule != nullptr && rule->kind == qvn::tables::ValueKind::Switch) {
        text += ", then " + std::to_string(rule->direction);
    }
    if (rule != nullptr && *rule->unit != '\0') {
        text += std::string(", ") + rule->unit;
    }
    const std::string message = receivedIn(row.codeId);
    return message.empty() ? text : text + ", " + message;
}

void print(const char* heading, bool settable) {
    std::printf("\n// %s\n", heading);
    std::set<std::uint32_t> seen;
    for (std::size_t i = 0; i < qvn::tables::kSignalTableRows; ++i) {
        const VehilceClientInfo& row = hap_signal_table[i];
        if ((qvn::tables::findSetSignal(row.codeId) != nullptr) == settable && seen.insert(row.codeId).second) {
            std::printf("constexpr int %-40s = 0x%08X;  // %s\n", nameOf(row.codeId).c_str(), row.property,
                        remark(row).c_str());
        }
    }
}

}  // namespace

int main() {
    std::fputs(kHead, stdout);
    print("What the vehicle reports.", false);
    print("What can be set.", true);
    std::fputs(kTail, stdout);
}
