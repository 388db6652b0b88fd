#ifndef TABLES_SIGNAL_TABLE_H
#define TABLES_SIGNAL_TABLE_H

#include <vehicle/VehicleProperty.h>

#include <cstddef>

namespace qvn {
namespace tables {

/// Rows of every function signal table; there is no terminator row.
extern const std::size_t kSignalTableRows;

}  // namespace tables
}  // namespace qvn

// One table for each head-unit function. Today all five hold the same rows in the same order.
QVN_VEHICLE_API extern const VehilceClientInfo avm_signal_table[];
QVN_VEHICLE_API extern const VehilceClientInfo rvc_signal_table[];
QVN_VEHICLE_API extern const VehilceClientInfo hap_signal_table[];
QVN_VEHICLE_API extern const VehilceClientInfo dms_signal_table[];
QVN_VEHICLE_API extern const VehilceClientInfo oms_signal_table[];

#endif  // TABLES_SIGNAL_TABLE_H
