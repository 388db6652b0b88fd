#ifndef IPC_COMMON_SOC_CAN_SERVICE_WIRE_H
#define IPC_COMMON_SOC_CAN_SERVICE_WIRE_H

#include <common_base/CFdbProtoMsgBuilder.h>
#include <common_base/fdbus.h>

#include <cstdint>
#include <string>

#include "common.base.canservice.pb.h"

// What client and CAN service agree on beyond the schema.

namespace qvn {
namespace wire {

/// BroadcastMessageStatus.msg_status: the signals of the CAN message are received again, or have stopped. Other values
/// ask for nothing.
constexpr std::uint32_t kMessageOk = 0;
constexpr std::uint32_t kMessageTimedOut = 64;

/// What the CAN service broadcasts.
inline can_service::BroadcastSignal signalMessage(const std::string& raw) {
    can_service::BroadcastSignal message;
    message.set_raw_value(raw);
    return message;
}
inline can_service::BroadcastMessageStatus statusMessage(std::uint32_t status) {
    can_service::BroadcastMessageStatus message;
    message.set_msg_status(status);
    return message;
}

/// Reads the payload of a bus message into a message of the schema; false, with `content` in any state, when it is not
/// one. A message of default values has no payload at all, and the bus refuses to deserialize that: a recovery and a
/// signal without bytes arrive so.
template <class Content>
bool read(const CFdbMessage& message, Content& content) {
    if (message.getPayloadSize() == 0) {
        content.Clear();
        return true;
    }
    CFdbProtoMsgParser parser(content);
    return message.deserialize(parser);
}

}  // namespace wire
}  // namespace qvn

#endif  // IPC_COMMON_SOC_CAN_SERVICE_WIRE_H
