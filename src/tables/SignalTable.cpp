#include "tables/SignalTable.h"

#include "common.base.canservice.pb.h"

namespace {

using namespace can_service;

constexpr std::int32_t kEnabled = 1;
constexpr std::uint32_t kGlobalArea = 0x01000000;

constexpr VehilceClientInfo row(CodeIdEnum code, std::int32_t type, std::uint32_t property) {
    return {static_cast<std::uint32_t>(code),
            kEnabled,
            type,
            kGlobalArea,
            qvn::platform::vehicle::VEHICLE_PROPERTY_STATUS_AVAILABLE,
            property};
}

constexpr VehilceClientInfo int32(CodeIdEnum code, std::uint32_t property) {
    return row(code, qvn::platform::vehicle::PROPERTY_TYPE_INT32, property);
}

constexpr VehilceClientInfo float32(CodeIdEnum code, std::uint32_t property) {
    return row(code, qvn::platform::vehicle::PROPERTY_TYPE_FLOAT, property);
}

}  // namespace

constexpr VehilceClientInfo avm_signal_table[] = {
#include "tables/SignalTableRows.inc"
};

constexpr VehilceClientInfo rvc_signal_table[] = {
#include "tables/SignalTableRows.inc"
};

constexpr VehilceClientInfo hap_signal_table[] = {
#include "tables/SignalTableRows.inc"
};

constexpr VehilceClientInfo dms_signal_table[] = {
#include "tables/SignalTableRows.inc"
};

constexpr VehilceClientInfo oms_signal_table[] = {
#include "tables/SignalTableRows.inc"
};

constexpr std::size_t qvn::tables::kSignalTableRows = sizeof(hap_signal_table) / sizeof(hap_signal_table[0]);
