#ifndef ADAPTER_T21_CAN_SIGNAL_ADAPTER_H
#define ADAPTER_T21_CAN_SIGNAL_ADAPTER_H

#include <string>

#include "adapter/CanSignalAdapter.h"

/// The adapter of the T21 vehicle line. Calls on one instance must not overlap.
class T21CanSignalAdapter : public CanSignalAdapter {
public:
    /// Raw bytes that are missing count as 0. Values are appended to the property's lists, one for every enabled table
    /// row of the signal.
    bool signalAdapter(int codeId, std::string value, const VehilceClientInfo* table,
                       VehicleClientProperty& property) override;

private:
    bool signalParsed = false;
};

#endif  // ADAPTER_T21_CAN_SIGNAL_ADAPTER_H
