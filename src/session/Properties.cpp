#include "session/Properties.h"

#include <vehicle/PropertyIds.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <stdexcept>

#include "tables/SetCatalogue.h"
#include "tables/SignalTable.h"

namespace qvn {
namespace session {

using platform::vehicle::SetError;
using platform::vehicle::SetResult;

namespace {

/// The first row of a property that matches; all functions serve the same rows.
template <class Matches>
const VehilceClientInfo* findRow(int property, Matches matches) {
    const VehilceClientInfo* const end = hap_signal_table + tables::kSignalTableRows;
    const VehilceClientInfo* const row = std::find_if(hap_signal_table, end, [&](const VehilceClientInfo& candidate) {
        return candidate.property == static_cast<std::uint32_t>(property) && matches(candidate);
    });
    return row == end ? nullptr : row;
}

bool isSettable(const VehilceClientInfo& row) {
    return tables::findSetSignal(row.codeId) != nullptr;
}

std::string text(double number) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%.10g", number);
    return buffer;
}

}  // namespace

std::string nameOf(int property) {
    if (const char* const name = platform::vehicle::propertyName(property)) {
        return name;
    }
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "property 0x%08X", static_cast<unsigned>(property));
    return buffer;
}

bool isReported(int property) {
    return findRow(property, [](const VehilceClientInfo& row) { return !isSettable(row); }) != nullptr;
}

void requireReported(const std::vector<int>& properties) {
    if (properties.empty()) {
        throw std::invalid_argument("a subscription needs a property at least");
    }
    for (const int property : properties) {
        if (!isReported(property)) {
            const bool exists = platform::vehicle::propertyName(property) != nullptr;
            throw std::invalid_argument(nameOf(property) + (exists ? " can only be set, the vehicle does not report it"
                                                                   : " does not exist, see <vehicle/PropertyIds.h>"));
        }
    }
}

SetResult checkSet(int property, double number) {
    SetResult result;
    const VehilceClientInfo* const row = findRow(property, isSettable);
    if (row == nullptr) {
        const bool exists = platform::vehicle::propertyName(property) != nullptr;
        result.error = exists ? SetError::NotSettable : SetError::UnknownProperty;
        result.text = nameOf(property) + (exists ? " is only reported by the vehicle, it cannot be set"
                                                 : " does not exist, see <vehicle/PropertyIds.h>");
        return result;
    }
    const tables::SetRange range = tables::setRange(*tables::findSetSignal(row->codeId));
    result.lowest = range.low;
    result.highest = range.high;
    if (!(number >= range.low && number <= range.high && number == std::floor(number))) {
        result.error = SetError::OutOfRange;
        result.text = text(number) + " does not fit " + nameOf(property) + ", which takes a whole number from " +
                      std::to_string(range.low) + " to " + std::to_string(range.high);
    }
    return result;
}

}  // namespace session
}  // namespace qvn
