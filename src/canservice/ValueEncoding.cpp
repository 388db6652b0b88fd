#include "canservice/ValueEncoding.h"

#include <limits>

namespace qvn {
namespace canservice {

namespace {

// 2^32, the first float that does not fit.
constexpr float kQuantityEnd = 4294967296.0f;

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

}  // namespace canservice
}  // namespace qvn
