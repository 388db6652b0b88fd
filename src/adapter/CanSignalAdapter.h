#ifndef ADAPTER_CAN_SIGNAL_ADAPTER_H
#define ADAPTER_CAN_SIGNAL_ADAPTER_H

#include <vehicle/VehicleProperty.h>

#include <string>

/// Turns a received CAN signal into a property value.
class CanSignalAdapter {
public:
    virtual ~CanSignalAdapter() = default;

    /// Decodes `value`, the raw bytes of signal `codeId`, into `property`, which comes in empty. `table` is the
    /// function signal table, or null while there is none. Returns whether a value was produced.
    virtual bool signalAdapter(int codeId, std::string value, const VehilceClientInfo* table,
                               VehicleClientProperty& property) = 0;
};

#endif  // ADAPTER_CAN_SIGNAL_ADAPTER_H
