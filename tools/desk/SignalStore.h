#pragma once

#include <common_base/fdbus.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ipc_common_soc/CanServiceWire.h"

namespace qvn::tools {

/// What a CAN service knows: the current raw value of every signal and the status of every message. A new subscriber is
/// answered from it.
///
/// Not synchronised. Its owner holds one lock while a value is kept and sent, and while a subscriber is answered: else
/// that one gets an old value after a newer one.
class SignalStore {
public:
    struct Value {
        std::string raw;
        std::optional<std::chrono::steady_clock::time_point> time;  ///< when it was sent; none for one that never was
    };

    void putSignal(std::uint32_t code, Value value) { mValues[code] = std::move(value); }
    void forgetSignal(std::uint32_t code) { mValues.erase(code); }
    void putMessageStatus(std::uint32_t code, std::uint32_t status) { mStatuses[code] = status; }

    std::optional<Value> signal(std::uint32_t code) const { return find(mValues, code); }
    std::optional<std::uint32_t> messageStatus(std::uint32_t code) const { return find(mStatuses, code); }

    /// Sends a subscriber what is known of a code.
    /// @return whether anything is
    bool answer(CFdbMessage& subscription, std::uint32_t code) const {
        const auto value = signal(code);
        if (value) {
            send(subscription, code, wire::signalMessage(value->raw));
        }
        const auto status = messageStatus(code);
        if (status) {
            send(subscription, code, wire::statusMessage(*status));
        }
        return value || status;
    }

    /// Sends to the client of that subscription alone.
    template <class Message>
    static void send(CFdbMessage& subscription, std::uint32_t code, const Message& message) {
        CFdbProtoMsgBuilder builder(message);
        subscription.broadcast(static_cast<FdbMsgCode_t>(code), builder);
    }

    /// What a client subscribes, in its order.
    static std::vector<std::uint32_t> codesOf(CFdbMessage& subscription) {
        std::vector<std::uint32_t> codes;
        CFdbMessage* const message = &subscription;
        const CFdbMsgSubscribeItem* item = nullptr;
        FDB_BEGIN_FOREACH_SIGNAL(message, item) {
            codes.push_back(static_cast<std::uint32_t>(item->msg_code()));
        }
        FDB_END_FOREACH_SIGNAL();
        return codes;
    }

private:
    template <class Content>
    static std::optional<Content> find(const std::map<std::uint32_t, Content>& contents, std::uint32_t code) {
        const auto found = contents.find(code);
        return found == contents.end() ? std::nullopt : std::optional(found->second);
    }

    std::map<std::uint32_t, Value> mValues;
    std::map<std::uint32_t, std::uint32_t> mStatuses;
};

}  // namespace qvn::tools
