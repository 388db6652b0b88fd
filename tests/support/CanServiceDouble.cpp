#include "support/CanServiceDouble.h"

#include <common_base/CFdbProtoMsgBuilder.h>

#include <iomanip>
#include <ostream>

#include "common.base.canservice.pb.h"

namespace qvn::test {

std::ostream& operator<<(std::ostream& out, const SetRequest& request) {
    out << can_service::CodeIdEnum_Name(static_cast<can_service::CodeIdEnum>(request.code)) << '#' << std::hex;
    for (const char byte : request.raw) {
        out << std::setw(2) << std::setfill('0') << static_cast<int>(static_cast<unsigned char>(byte));
    }
    return out << std::dec;
}

CanServiceDouble::CanServiceDouble() : CBaseServer("fdbus_can_service", &serviceWorker) {
    bind("svc://fdbus_can_service");
}

CanServiceDouble::~CanServiceDouble() {
    prepareDestroy();
}

void CanServiceDouble::setInitialValue(std::uint32_t code, std::string raw) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mInitialValues[code] = std::move(raw);
}

void CanServiceDouble::signal(std::uint32_t code, const std::string& raw) {
    can_service::BroadcastSignal message;
    message.set_raw_value(raw);
    CFdbProtoMsgBuilder builder(message);
    broadcast(static_cast<FdbMsgCode_t>(code), builder);
}

void CanServiceDouble::messageStatus(std::uint32_t code, std::uint32_t status) {
    can_service::BroadcastMessageStatus message;
    message.set_msg_status(status);
    CFdbProtoMsgBuilder builder(message);
    broadcast(static_cast<FdbMsgCode_t>(code), builder);
}

void CanServiceDouble::payload(std::uint32_t code, const std::string& bytes) {
    broadcast(static_cast<FdbMsgCode_t>(code), bytes.data(), static_cast<std::int32_t>(bytes.size()));
}

void CanServiceDouble::onSubscribe(CBaseJob::Ptr& job) {
    auto* const message = castToMessage<CFdbMessage*>(job);
    std::vector<std::uint32_t> codes;
    const CFdbMsgSubscribeItem* item = nullptr;
    FDB_BEGIN_FOREACH_SIGNAL(message, item)
    const auto code = static_cast<std::uint32_t>(item->msg_code());
    codes.push_back(code);
    const std::lock_guard<std::mutex> lock(mMutex);
    const auto value = mInitialValues.find(code);
    if (value != mInitialValues.end()) {
        can_service::BroadcastSignal current;
        current.set_raw_value(value->second);
        CFdbProtoMsgBuilder builder(current);
        message->broadcast(item->msg_code(), builder);
    }
    FDB_END_FOREACH_SIGNAL();
    subscriptions.add(codes);
}

void CanServiceDouble::onInvoke(CBaseJob::Ptr& job) {
    auto* const message = castToMessage<CFdbMessage*>(job);
    can_service::SetSignalValueRequest request;
    CFdbProtoMsgParser parser(request);
    if (message->deserialize(parser)) {
        requests.add({message->code(), request.raw_value()});
    }
}

}  // namespace qvn::test
