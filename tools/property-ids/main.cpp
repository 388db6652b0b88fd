// Prints what is made from the tables: include/vehicle/PropertyIds.h, and with --markdown docs/properties.md.

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <vector>

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

constexpr char kMarkdownHead[] = R"(# Properties

Made from the tables by `scripts/generate`; do not edit. The names are those of `<vehicle/PropertyIds.h>`.

Raw bytes are unsigned and big-endian. *integer* means one entry in `int32Values`, *float* one in `floatValues`, *switch* the
state and a direction code in `int32Values`. A factor is what one step of the raw number is worth; an integer loses its
fraction. Of what can be set, the bytes are value + offset.
)";

std::string nameOf(std::uint32_t code) {
    return can_service::CodeIdEnum_Name(static_cast<can_service::CodeIdEnum>(code)).substr(sizeof("QVN_GET_") - 1);
}

bool has(const qvn::tables::Span<SignalListRow>& signals, std::uint32_t code) {
    return std::any_of(signals.begin(), signals.end(), [&](const SignalListRow& row) { return row.code_id == code; });
}

/// The message in which a signal is received or set.
std::string messageOf(std::uint32_t code) {
    for (const qvn::tables::MessageRow& message : qvn::tables::kMessages) {
        if (has(message.signals, code)) {
            return nameOf(message.code);
        }
    }
    for (const qvn::tables::SetMessageRow& message : qvn::tables::kSetMessages) {
        if (has(message.signals, code)) {
            return message.name + std::strlen("QVN_SET_");
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
    return text + ", " + messageOf(row.codeId);
}

/// The rows of the signal table that are received or can be set, each signal once.
std::vector<VehilceClientInfo> rowsOf(bool settable) {
    std::vector<VehilceClientInfo> rows;
    std::set<std::uint32_t> seen;
    for (std::size_t i = 0; i < qvn::tables::kSignalTableRows; ++i) {
        const VehilceClientInfo& row = hap_signal_table[i];
        if ((qvn::tables::findSetSignal(row.codeId) != nullptr) == settable && seen.insert(row.codeId).second) {
            rows.push_back(row);
        }
    }
    return rows;
}

void printConstants(const char* heading, bool settable) {
    std::printf("\n// %s\n", heading);
    for (const VehilceClientInfo& row : rowsOf(settable)) {
        std::printf("constexpr int %-40s = 0x%08X;  // %s\n", nameOf(row.codeId).c_str(), row.property,
                    remark(row).c_str());
    }
}

std::string bytesText(std::uint32_t bytes) {
    return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
}

std::string ruleText(std::uint32_t code) {
    if (const qvn::tables::SetRow* const row = qvn::tables::findSetSignal(code)) {
        return bytesText(row->bytes) + (row->offset == 0 ? "" : ", offset " + std::to_string(row->offset));
    }
    const qvn::tables::DecodingRow& row = *qvn::tables::findDecodingRule(code);
    using qvn::tables::ValueKind;
    std::string text = row.kind == ValueKind::Integer ? "integer" : row.kind == ValueKind::Float ? "float" : "switch";
    text += ", " + bytesText(row.bytes);
    if (row.factor != 1.0) {
        char factor[32];
        std::snprintf(factor, sizeof factor, " × %g ", row.factor);
        text += factor + std::string(row.unit);
    }
    return row.kind == ValueKind::Switch ? text + ", direction " + std::to_string(row.direction) : text;
}

void printSections(const char* heading, bool settable) {
    std::map<std::string, std::vector<VehilceClientInfo>> messages;
    for (const VehilceClientInfo& row : rowsOf(settable)) {
        messages[messageOf(row.codeId)].push_back(row);
    }
    std::printf("\n## %s\n", heading);
    for (const auto& [message, rows] : messages) {
        std::printf("\n### %s\n\n| signal | property | raw bytes |\n| --- | --- | --- |\n", message.c_str());
        for (const VehilceClientInfo& row : rows) {
            std::printf("| `%s` | `0x%08X` | %s |\n", nameOf(row.codeId).c_str(), row.property,
                        ruleText(row.codeId).c_str());
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], "--markdown") == 0) {
        std::fputs(kMarkdownHead, stdout);
        printSections("What the vehicle reports, by message", false);
        printSections("What can be set, by message", true);
        return 0;
    }
    std::fputs(kHead, stdout);
    printConstants("What the vehicle reports.", false);
    printConstants("What can be set.", true);
    std::fputs(kTail, stdout);
}
