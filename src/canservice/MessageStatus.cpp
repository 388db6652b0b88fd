#include <algorithm>

#include "canservice/CallApplication.h"
#include "canservice/T21CanServiceFdbusClient.h"
#include "log/Log.h"
#include "tables/SignalTable.h"

using namespace qvn::platform::vehicle;
using qvn::canservice::callApplication;

namespace {

constexpr int kEntryLogLine = 385;

}  // namespace

void T21CanServiceFdbusClient::feedbackSignalStatus(int code_id, VehiclePropertyStatus status) {
    feedbackSignalStatus(code_id, status, qvn::tables::findMessage(static_cast<std::uint32_t>(code_id)));
}

void T21CanServiceFdbusClient::feedbackSignalStatus(int code_id, VehiclePropertyStatus status,
                                                    const qvn::tables::MessageRow* message) {
    QVN_LOG_AT(Error, kEntryLogLine, "[%s][%d]feedbackSignalStatus code_id :%d", code_id);

    const VehilceClientInfo* const table = signal_table_;
    if (message == nullptr || errorCallback == nullptr || table == nullptr) {
        return;
    }

    const VehilceClientInfo* const end = table + qvn::tables::kSignalTableRows;
    for (const SignalListRow& signal : message->signals) {
        const auto matches = [&signal](const VehilceClientInfo& row) { return row.codeId == signal.code_id; };
        for (const VehilceClientInfo* found = std::find_if(table, end, matches); found != end;
             found = std::find_if(found + 1, end, matches)) {
            const VehilceClientInfo& row = *found;
            if (gate.isClosed()) {
                return;  // the client ends; a message has up to 55 properties
            }
            const int property = static_cast<int>(row.property);
            // An application may subscribe anew from inside its callback; the rest of the message is for the new one.
            if (const SetErrorCallback report = errorCallback) {
                callApplication([&] { report(property, status); });
            }
            if (status == VEHICLE_PROPERTY_STATUS_AVAILABLE) {
                if (const AvailableSignalCallback replay = currentAvailableCallback()) {
                    callApplication([&] { replay(static_cast<VehicleProperty>(property)); });
                }
            }
            QVN_LOG_AT(Info, message->logLine, message->logFormat, static_cast<int>(row.codeId), signal.name, property,
                       static_cast<int>(status));
        }
    }
}
