#include <common_base/CFdbProtoMsgBuilder.h>

#include "canservice/T21CanServiceFdbusClient.h"
#include "canservice/ValueEncoding.h"
#include "log/Log.h"
#include "tables/RawBytes.h"
#include "tables/SetCatalogue.h"
#include "tables/SignalTable.h"

using namespace qvn::platform::vehicle;
using namespace qvn::canservice;

namespace {

constexpr int kRowLogLine = 72;
constexpr int kNotSettableLogLine = 1110;

bool feeds(const VehilceClientInfo& row, VehicleProperty property) {
    return row.property == static_cast<std::uint32_t>(property) && (row.direction & 0xFF) != 0;
}

}  // namespace

template <class T>
bool T21CanServiceFdbusClient::signalFeedback(VehicleProperty property, T value) {
    const VehilceClientInfo* const table = signal_table_;
    if (table == nullptr) {
        return false;
    }

    bool sent = false;
    const std::size_t rows = qvn::tables::kSignalTableRows;
    for (std::size_t i = 0; i < rows; ++i) {
        const VehilceClientInfo& row = table[i];
        if (!feeds(row, property)) {
            continue;
        }
        const int code = static_cast<int>(row.codeId);
        QVN_LOG_AT(Info, kRowLogLine, "[%s][%d]vehicle client code id:%d, signal_table_[i].property:%d", code,
                   static_cast<int>(row.property));

        const qvn::tables::SetRow* const signal = qvn::tables::findSetSignal(row.codeId);
        if (signal == nullptr) {
            QVN_LOG_AT(Info, kNotSettableLogLine, "[%s][%d]Not Feedback Can Signal Id = [%d]!", code);
            sent = false;
            continue;
        }
        const std::string raw = qvn::tables::rawBytes(quantity(value, signal->offset), signal->bytes);
        can_service::SetSignalValueRequest request;
        request.set_raw_value(raw);
        if (!hand(code, request)) {
            QVN_LOG(Error, "[%s][%d]vehicle client has ended, set of property:%d refused!", static_cast<int>(property));
            return false;
        }
        QVN_LOG_AT(Error, signal->logLine, signal->logFormat, static_cast<unsigned char>(raw[0]));
        sent = true;
    }
    return sent;
}

bool T21CanServiceFdbusClient::hand(int code, const can_service::SetSignalValueRequest& request) {
    const qvn::sync::MutexLock lock(sendMutex);
    if (sendingEnded) {
        return false;
    }
    CFdbProtoMsgBuilder builder(request);
    send(code, builder);  // what it returns says nothing: also true while the service is away
    return true;
}

template bool T21CanServiceFdbusClient::signalFeedback(VehicleProperty, int);
template bool T21CanServiceFdbusClient::signalFeedback(VehicleProperty, long);
template bool T21CanServiceFdbusClient::signalFeedback(VehicleProperty, float);
template bool T21CanServiceFdbusClient::signalFeedback(VehicleProperty, unsigned char);
