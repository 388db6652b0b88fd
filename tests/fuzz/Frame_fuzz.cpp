// The bus's frame reader: the input is what a peer sends, any number of frames and the beginning of one.

#include <Frame.h>

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "Require.h"

namespace {

using qvn::fuzz::require;

bool sameItem(const CFdbMsgSubscribeItem& a, const CFdbMsgSubscribeItem& b) {
    return a.msg_code() == b.msg_code() && a.filter() == b.filter();
}

/// A list that was read is read as the same after it was written again.
void requireRoundTrip(const CFdbMsgSubscribeList& list) {
    fdb::FrameBuilder builder(fdb::FrameKind::Subscribe, 0, 0, nullptr);
    require(builder.append(list));
    const std::string_view bytes = builder.bytes();
    fdb::FrameView frame;
    std::size_t used = 0;
    require(fdb::readFrame(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size(), frame, used) ==
            fdb::FrameResult::Complete);
    CFdbMsgSubscribeList again;
    require(fdb::readSubscribeList(frame, again));
    require(std::equal(list.begin(), list.end(), again.begin(), again.end(), sameItem));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    for (;;) {
        fdb::FrameView frame;
        std::size_t used = 0;
        switch (fdb::readFrame(data, size, frame, used)) {
            case fdb::FrameResult::Malformed:
                return 0;
            case fdb::FrameResult::Incomplete:
                require(used > size && used <= fdb::kMaxFrameBytes);
                return 0;
            case fdb::FrameResult::Complete:
                break;
        }
        require(used >= sizeof(fdb::FrameHeader) && used <= size && frame.size >= 0);
        require(frame.payload + frame.size == data + used);
        CFdbMsgSubscribeList list;
        if (fdb::readSubscribeList(frame, list)) {
            requireRoundTrip(list);
        }
        data += used;
        size -= used;
    }
}
