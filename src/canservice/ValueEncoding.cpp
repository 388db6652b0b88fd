#include "canservice/ValueEncoding.h"

#include <limits>

namespace qvn {
namespace canservice {

namespace {

// 2^32, the first float that does not fit.
constexpr float kQuantityEnd = 4294967296.0f;

char lowByte(std::uint32_t value) {
    return static_cast<char>(static_cast<unsigned char>(value & 0xFF));
}

}  // namespace

std::uint32_t quantity(float value, int offset) {
    const float sum = value + static_cast<float>(offset);
    // Written so that NaN falls in here.
    if (!(sum > 0.0f)) {
        return 0;
    }
    if (sum >= kQuantityEnd) {
        return std::numeric_limits<std::uint32_t>::max();
    }
    return static_cast<std::uint32_t>(sum);
}

std::string encode(tables::SetEncoding encoding, std::uint32_t quantity) {
    std::string raw;
    switch (encoding) {
        case tables::SetEncoding::U8:
        case tables::SetEncoding::U8Plus:
            raw = {lowByte(quantity)};
            break;
        case tables::SetEncoding::U16Be:
        case tables::SetEncoding::U16BePlus:
            raw = {lowByte(quantity >> 8), lowByte(quantity)};
            break;
    }
    return raw;
}

}  // namespace canservice
}  // namespace qvn
