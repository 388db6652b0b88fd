#include <algorithm>

#include "callback/CallApplication.h"
#include "canservice/T21CanServiceFdbusClient.h"
#include "log/Log.h"
#include "tables/SignalTable.h"

using namespace qvn::platform::vehicle;
using qvn::callback::callApplication;

namespace {

constexpr int kEntryLogLine = 385;

/// For each signal of the message the table rows that it feeds, in table order; until a visit returns false.
template <class Visit>
void forEachRow(const qvn::tables::MessageRow& message, const VehilceClientInfo* table, Visit visit) {
    const VehilceClientInfo* const end = table + qvn::tables::kSignalTableRows;
    for (const SignalListRow& signal : message.signals) {
        const auto matches = [&signal](const VehilceClientInfo& row) { return row.codeId == signal.code_id; };
        for (const VehilceClientInfo* row = std::find_if(table, end, matches); row != end;
             row = std::find_if(row + 1, end, matches)) {
            if (!visit(signal, *row)) {
                return;
            }
        }
    }
}

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
    const char* const function = __func__;
    forEachRow(*message, table, [&](const SignalListRow& signal, const VehilceClientInfo& row) {
        if (gate.isClosed()) {
            return false;  // the client ends; a message has up to 55 properties
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
        qvn::log::print(lgk::LogLevel::Info, function, message->logLine, message->logFormat,
                        static_cast<int>(row.codeId), signal.name, property, static_cast<int>(status));
        return true;
    });
}

void T21CanServiceFdbusClient::tellStatus(const qvn::tables::MessageRow& message, VehiclePropertyStatus status) {
    const VehilceClientInfo* const table = signal_table_;
    if (observer == nullptr || table == nullptr) {
        return;
    }
    forEachRow(message, table, [&](const SignalListRow&, const VehilceClientInfo& row) {
        observer->statusReported(static_cast<int>(row.property), status);
        return !gate.isClosed();
    });
}
