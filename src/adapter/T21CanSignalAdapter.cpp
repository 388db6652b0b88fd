#include "adapter/T21CanSignalAdapter.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "log/Log.h"
#include "tables/DecodingRules.h"
#include "tables/RawBytes.h"
#include "tables/SignalTable.h"

namespace {

using qvn::platform::vehicle::PropertyType;
using qvn::tables::DecodingRow;
using qvn::tables::ValueKind;

bool isEnabled(const VehilceClientInfo& row) {
    return (row.direction & 0xFF) != 0;
}

void fillHeader(const VehilceClientInfo& row, VehicleClientProperty& property) {
    property.propValue.timestamp = 0;
    property.propValue.areaId = static_cast<std::int32_t>(row.areaId);
    property.propValue.prop = static_cast<std::int32_t>(row.property);
    property.propValue.status = row.status;
    property.propertyType = static_cast<PropertyType>(row.propertyType);
}

}  // namespace

bool T21CanSignalAdapter::signalAdapter(int codeId, std::string value, const VehilceClientInfo* table,
                                        VehicleClientProperty& property) {
    signalParsed = false;
    // A value may arrive between the connection and the hand-over of the table.
    if (table == nullptr) {
        return false;
    }

    const auto code = static_cast<std::uint32_t>(codeId);
    const auto matches = [code](const VehilceClientInfo& row) { return row.codeId == code && isEnabled(row); };
    const VehilceClientInfo* const end = table + qvn::tables::kSignalTableRows;
    for (const VehilceClientInfo* row = std::find_if(table, end, matches); row != end;
         row = std::find_if(row + 1, end, matches)) {
        fillHeader(*row, property);

        const DecodingRow* const rule = qvn::tables::findDecodingRule(code);
        if (rule == nullptr) {
            QVN_LOG(Info, "[%s][%d]Not Parse Can Signal Id = [%d]!", codeId);
            return false;
        }
        std::vector<int>& integers = property.propValue.value.int32Values;
        std::vector<float>& floats = property.propValue.value.floatValues;
        const float scaled = static_cast<float>(qvn::tables::numberIn(value, rule->bytes) * rule->factor);
        switch (rule->kind) {
            case ValueKind::Integer:
                integers.push_back(static_cast<int>(scaled));
                if (rule->logFormat != nullptr) {
                    QVN_LOG(Info, rule->logFormat, integers[0]);
                }
                break;
            case ValueKind::Float:
                floats.push_back(scaled);
                if (rule->logFormat != nullptr) {
                    QVN_LOG(Info, rule->logFormat, static_cast<double>(floats[0]));
                }
                break;
            case ValueKind::Switch:
                integers.reserve(integers.size() + 2);
                integers.push_back(static_cast<int>(scaled));
                integers.push_back(rule->direction);
                QVN_LOG(Info, rule->logFormat, integers[0], rule->direction);
                break;
        }
        signalParsed = true;
    }
    return signalParsed;
}
