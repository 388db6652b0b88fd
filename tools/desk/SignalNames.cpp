#include "desk/SignalNames.h"

#include <optional>

#include "common.base.canservice.pb.h"
#include "desk/BadInput.h"
#include "desk/Number.h"
#include "desk/Suggestions.h"
#include "desk/Text.h"
#include "tables/DecodingRules.h"
#include "tables/MessageCatalogue.h"
#include "tables/SetCatalogue.h"
#include "tables/SignalLists.h"

namespace qvn::tools {
namespace {

constexpr std::string_view kGetPrefix = "QVN_GET_";
constexpr std::string_view kSetPrefix = "QVN_SET_";

bool startsWith(std::string_view text, std::string_view prefix) {
    return text.substr(0, prefix.size()) == prefix;
}

bool isOfKind(NameKind kind, std::uint32_t code) {
    switch (kind) {
        case NameKind::Received:
            return tables::findDecodingRule(code) != nullptr;
        case NameKind::Message:
            return tables::findMessage(code) != nullptr;
        case NameKind::Settable:
            return tables::findSetSignal(code) != nullptr;
    }
    return false;
}

const char* kindText(NameKind kind) {
    switch (kind) {
        case NameKind::Received:
            return "received signal";
        case NameKind::Message:
            return "message";
        case NameKind::Settable:
            return "settable signal";
    }
    return "name";
}

}  // namespace

std::string_view withoutPrefix(std::string_view name) {
    const bool prefixed = startsWith(name, kGetPrefix) || startsWith(name, kSetPrefix);
    return prefixed ? name.substr(kGetPrefix.size()) : name;
}

std::optional<std::uint32_t> lookUpCode(NameKind kind, std::string_view name) {
    if (const std::optional<std::uint32_t> code = parseHex(name)) {
        return code;
    }
    const std::string_view prefix = kind == NameKind::Settable ? kSetPrefix : kGetPrefix;
    const std::string full = startsWith(name, prefix) ? std::string(name) : std::string(prefix) + std::string(name);
    can_service::CodeIdEnum value = can_service::QVN_RESERVED_ID;
    if (can_service::CodeIdEnum_Parse(full, &value)) {
        const auto code = static_cast<std::uint32_t>(value);
        if (isOfKind(kind, code)) {
            return code;
        }
    }
    return std::nullopt;
}

std::uint32_t findCode(NameKind kind, std::string_view name) {
    if (const std::optional<std::uint32_t> code = lookUpCode(kind, name)) {
        return *code;
    }
    throw BadInput("unknown " + std::string(kindText(kind)) + " " + quoted(name) +
                   suggestionText(withoutPrefix(name), knownNames(kind)));
}

std::string signalName(std::uint32_t code) {
    const auto value = static_cast<can_service::CodeIdEnum>(code);
    const std::string& name = can_service::CodeIdEnum_Name(value);
    return name.empty() ? hexText(code) : std::string(withoutPrefix(name));
}

std::vector<std::string> knownNames(NameKind kind) {
    std::vector<std::string> names;
    switch (kind) {
        case NameKind::Received:
            for (const tables::DecodingRow& row : tables::kDecodingRules) {
                names.push_back(signalName(row.code));
            }
            break;
        case NameKind::Message:
            for (const tables::MessageRow& row : tables::kMessages) {
                names.push_back(signalName(row.code));
            }
            break;
        case NameKind::Settable:
            for (const tables::SetRow& row : tables::kSetSignals) {
                names.push_back(signalName(row.code));
            }
            break;
    }
    return names;
}

std::optional<std::uint32_t> messageOf(std::uint32_t signalCode) {
    for (const tables::MessageRow& message : tables::kMessages) {
        for (const SignalListRow& signal : message.signals) {
            if (signal.code_id == signalCode) {
                return message.code;
            }
        }
    }
    return std::nullopt;
}

}  // namespace qvn::tools
