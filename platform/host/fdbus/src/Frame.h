#pragma once

#include <common_base/CFdbMessage.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace fdb {

enum class FrameKind : uint16_t {
    Subscribe = 1,  ///< client to server; the payload is a list of codes and topics
    Unsubscribe,    ///< client to server; as Subscribe
    Send,           ///< client to server, one way
    Invoke,         ///< answered by Reply or Status with the same serial
    Reply,          ///< server to client
    Status,         ///< `code` is the error, the payload its text
    Broadcast,      ///< server to client
};
constexpr uint16_t kLastFrameKind = static_cast<uint16_t>(FrameKind::Broadcast);

/// What stands before the topic and the payload of every frame. Both ends are on one machine: its own byte order.
struct FrameHeader {
    uint32_t length;  ///< bytes that follow the header
    uint16_t kind;
    uint16_t topicLength;  ///< of these, the topic
    int32_t code;
    uint32_t serial;
};
static_assert(sizeof(FrameHeader) == 16, "the header has no padding");

/// A frame that announces more is malformed.
constexpr size_t kMaxFrameBytes = size_t{16} * 1024 * 1024;

/// A received frame; the views are valid during the callback that gets it.
struct FrameView {
    FrameKind kind;
    int32_t code;
    uint32_t serial;
    std::string_view topic;
    const uint8_t* payload;
    int32_t size;
};

enum class FrameResult { Complete, Incomplete, Malformed };

/// Reads one frame from the front of `data`. Complete: fills `frame`, and `used` with the frame's bytes.
/// Incomplete: `used` is what the frame needs in all, as far as known.
FrameResult readFrame(const uint8_t* data, size_t size, FrameView& frame, size_t& used);

/// A frame in the making, in memory that its thread keeps for the next one.
class FrameBuilder {
public:
    FrameBuilder(FrameKind kind, int32_t code, uint32_t serial, const char* topic);
    ~FrameBuilder();
    FrameBuilder(const FrameBuilder&) = delete;
    FrameBuilder& operator=(const FrameBuilder&) = delete;

    /// Append the payload; false when it cannot be built or is too large.
    bool append(IFdbMsgBuilder& builder);
    bool append(const void* data, size_t size);
    bool append(const CFdbMsgSubscribeList& list);

    /// The whole frame, valid while the builder lives.
    std::string_view bytes();

private:
    std::vector<char> mBytes;
};

/// The payload of a Subscribe or Unsubscribe frame; false when it is malformed.
bool readSubscribeList(const FrameView& frame, CFdbMsgSubscribeList& list);

}  // namespace fdb
