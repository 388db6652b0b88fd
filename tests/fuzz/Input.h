#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "tables/SubscriptionCodes.h"

namespace qvn::fuzz {

/// Takes the bytes of an input apart; past its end they are zero.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : mAt(data), mEnd(data + size) {}

    std::uint8_t byte() { return mAt == mEnd ? std::uint8_t{0} : *mAt++; }

    /// One byte that chooses a code which the CAN service sends, or that announces four with any code.
    std::int32_t code() {
        const std::uint8_t choice = byte();
        if (choice < tables::kSubscriptionCodes.size()) {
            return static_cast<std::int32_t>(tables::kSubscriptionCodes[choice]);
        }
        std::uint32_t code = 0;
        for (int i = 0; i < 4; ++i) {
            code = code << 8 | byte();
        }
        return static_cast<std::int32_t>(code);
    }

    std::string rest() const { return std::string(mAt, mEnd); }

private:
    const std::uint8_t* mAt;
    const std::uint8_t* mEnd;
};

}  // namespace qvn::fuzz
