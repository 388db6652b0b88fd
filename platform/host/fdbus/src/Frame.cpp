#include "Frame.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace fdb {
namespace {

/// The memory of a larger frame is not kept.
constexpr size_t kKeptBytes = size_t{64} * 1024;

thread_local bool threadEnds = false;

/// Memory that no builder of this thread uses. Destructors of static objects may send when it is gone.
thread_local struct Spare {
    ~Spare() { threadEnds = true; }
    std::vector<char> memory;
} spare;

template <typename T>
void appendNumber(std::vector<char>& bytes, T value) {
    const char* begin = reinterpret_cast<const char*>(&value);
    bytes.insert(bytes.end(), begin, begin + sizeof(T));
}

template <typename T>
bool takeNumber(const uint8_t*& at, const uint8_t* end, T& value) {
    if (static_cast<size_t>(end - at) < sizeof(T)) {
        return false;
    }
    std::memcpy(&value, at, sizeof(T));
    at += sizeof(T);
    return true;
}

}  // namespace

FrameResult readFrame(const uint8_t* data, size_t size, FrameView& frame, size_t& used) {
    FrameHeader header;
    if (size < sizeof(header)) {
        used = sizeof(header);
        return FrameResult::Incomplete;
    }
    std::memcpy(&header, data, sizeof(header));
    if (header.kind == 0 || header.kind > kLastFrameKind || header.topicLength > header.length ||
        header.length > kMaxFrameBytes - sizeof(header)) {
        return FrameResult::Malformed;
    }
    used = sizeof(header) + header.length;
    if (size < used) {
        return FrameResult::Incomplete;
    }
    const uint8_t* topic = data + sizeof(header);
    frame.kind = static_cast<FrameKind>(header.kind);
    frame.code = header.code;
    frame.serial = header.serial;
    frame.topic = std::string_view(reinterpret_cast<const char*>(topic), header.topicLength);
    frame.payload = topic + header.topicLength;
    frame.size = static_cast<int32_t>(header.length - header.topicLength);
    return FrameResult::Complete;
}

FrameBuilder::FrameBuilder(FrameKind kind, int32_t code, uint32_t serial, const char* topic) {
    if (!threadEnds) {
        mBytes.swap(spare.memory);
    }
    constexpr size_t kMaxTopic = std::numeric_limits<uint16_t>::max();
    const size_t topicLength = topic ? std::min(std::strlen(topic), kMaxTopic) : 0;
    const FrameHeader header{0, static_cast<uint16_t>(kind), static_cast<uint16_t>(topicLength), code, serial};
    mBytes.resize(sizeof(header) + topicLength);
    std::memcpy(mBytes.data(), &header, sizeof(header));
    if (topicLength != 0) {
        std::memcpy(mBytes.data() + sizeof(header), topic, topicLength);
    }
}

FrameBuilder::~FrameBuilder() {
    if (!threadEnds && mBytes.capacity() <= kKeptBytes) {
        mBytes.swap(spare.memory);
    }
}

bool FrameBuilder::append(IFdbMsgBuilder& builder) {
    const int32_t size = builder.build();
    if (size < 0 || static_cast<size_t>(size) > kMaxFrameBytes - mBytes.size()) {
        return false;
    }
    const size_t begin = mBytes.size();
    mBytes.resize(begin + static_cast<size_t>(size));
    return size == 0 || builder.toBuffer(reinterpret_cast<uint8_t*>(mBytes.data() + begin), size);
}

bool FrameBuilder::append(const void* data, size_t size) {
    if (size > kMaxFrameBytes - mBytes.size()) {
        return false;
    }
    const char* begin = static_cast<const char*>(data);
    mBytes.insert(mBytes.end(), begin, begin + size);
    return true;
}

bool FrameBuilder::append(const CFdbMsgSubscribeList& list) {
    for (const CFdbMsgSubscribeItem& item : list) {
        const size_t length = std::min<size_t>(item.filter().size(), std::numeric_limits<uint16_t>::max());
        appendNumber(mBytes, item.msg_code());
        appendNumber(mBytes, static_cast<uint16_t>(length));
        mBytes.insert(mBytes.end(), item.filter().data(), item.filter().data() + length);
    }
    return mBytes.size() <= kMaxFrameBytes;
}

std::string_view FrameBuilder::bytes() {
    const auto length = static_cast<uint32_t>(mBytes.size() - sizeof(FrameHeader));
    std::memcpy(mBytes.data() + offsetof(FrameHeader, length), &length, sizeof(length));
    return std::string_view(mBytes.data(), mBytes.size());
}

bool readSubscribeList(const FrameView& frame, CFdbMsgSubscribeList& list) {
    const uint8_t* at = frame.payload;
    const uint8_t* end = at + frame.size;
    while (at != end) {
        int32_t code = 0;
        uint16_t length = 0;
        if (!takeNumber(at, end, code) || !takeNumber(at, end, length) || end - at < length) {
            return false;
        }
        list.emplace_back(code, std::string(reinterpret_cast<const char*>(at), length).c_str());
        at += length;
    }
    return true;
}

}  // namespace fdb
