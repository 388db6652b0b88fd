#include "desk/PropertyNames.h"

#include <algorithm>

#include "desk/BadInput.h"
#include "desk/Number.h"
#include "desk/SignalNames.h"
#include "desk/Suggestions.h"
#include "desk/Text.h"
#include "tables/DecodingRules.h"
#include "tables/SetCatalogue.h"
#include "tables/SignalTable.h"

namespace qvn::tools {
namespace {

void addOnce(std::vector<std::uint32_t>& codes, std::uint32_t code) {
    if (std::find(codes.begin(), codes.end(), code) == codes.end()) {
        codes.push_back(code);
    }
}

std::string nameOf(const std::vector<std::uint32_t>& codes) {
    const std::string first = signalName(codes.front());
    if (codes.size() == 1) {
        return first;
    }
    std::size_t common = first.size();
    for (const std::uint32_t code : codes) {
        const std::string other = signalName(code);
        const auto end = std::mismatch(first.begin(), first.end(), other.begin(), other.end()).first;
        common = std::min(common, static_cast<std::size_t>(end - first.begin()));
    }
    return first.substr(0, first.rfind('_', common) + 1) + "*";
}

std::vector<PropertyInfo> readTable() {
    std::vector<PropertyInfo> result;
    for (std::size_t i = 0; i < tables::kSignalTableRows; ++i) {
        const VehilceClientInfo& row = hap_signal_table[i];
        auto found = std::find_if(result.begin(), result.end(), [&](const auto& p) { return p.id == row.property; });
        if (found == result.end()) {
            found = result.insert(result.end(), PropertyInfo{});
            found->id = row.property;
            found->type = static_cast<platform::vehicle::PropertyType>(row.propertyType);
        }
        addOnce(tables::findSetSignal(row.codeId) ? found->settable : found->received, row.codeId);
    }
    for (PropertyInfo& property : result) {
        property.name = nameOf(property.received.empty() ? property.settable : property.received);
    }
    return result;
}

std::vector<std::string> allNames() {
    std::vector<std::string> names;
    for (const PropertyInfo& property : properties()) {
        for (const auto* codes : {&property.received, &property.settable}) {
            std::transform(codes->begin(), codes->end(), std::back_inserter(names), signalName);
        }
    }
    return names;
}

bool names(const PropertyInfo& property, const std::string& shortName) {
    const auto isIt = [&](std::uint32_t code) { return signalName(code) == shortName; };
    return std::any_of(property.received.begin(), property.received.end(), isIt) ||
           std::any_of(property.settable.begin(), property.settable.end(), isIt);
}

}  // namespace

const std::vector<PropertyInfo>& properties() {
    static const std::vector<PropertyInfo> all = readTable();
    return all;
}

const PropertyInfo* findProperty(std::uint32_t id) {
    const std::vector<PropertyInfo>& all = properties();
    const auto found = std::find_if(all.begin(), all.end(), [&](const auto& p) { return p.id == id; });
    return found == all.end() ? nullptr : &*found;
}

const PropertyInfo& propertyNamed(std::string_view text) {
    if (const auto id = parseHex(text)) {
        if (const PropertyInfo* property = findProperty(*id)) {
            return *property;
        }
        throw BadInput("no property has the identifier " + hexText(*id) + "; 'vehiclectl list' shows them all");
    }
    const std::string name(withoutPrefix(text));
    for (const PropertyInfo& property : properties()) {
        if (property.name == name || names(property, name)) {
            return property;
        }
    }
    throw BadInput("unknown property " + quoted(text) + suggestionText(name, allNames()));
}

std::string switchName(const PropertyInfo& property, std::int32_t direction) {
    for (const std::uint32_t code : property.received) {
        const tables::DecodingRow* const row = tables::findDecodingRule(code);
        if (row && row->kind == tables::ValueKind::Switch && row->direction == direction) {
            return signalName(code);
        }
    }
    return {};
}

}  // namespace qvn::tools
