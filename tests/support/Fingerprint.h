#pragma once

#include <cstdint>
#include <cstring>

namespace qvn::test {

/// One number for many results, of four bytes each, in their order (FNV-1a).
class Fingerprint {
public:
    template <class Result>
    void add(Result result) {
        static_assert(sizeof result == 4, "the bytes of others differ between processors");
        std::uint32_t bits = 0;
        std::memcpy(&bits, &result, sizeof bits);
        for (int shift = 0; shift < 32; shift += 8) {
            mValue = (mValue ^ (bits >> shift & 0xFFU)) * 0x100000001B3U;
        }
    }
    std::uint64_t value() const { return mValue; }

private:
    std::uint64_t mValue = 0xCBF29CE484222325U;
};

}  // namespace qvn::test
