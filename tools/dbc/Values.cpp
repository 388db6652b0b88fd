#include "dbc/Values.h"

#include <algorithm>
#include <cstring>

namespace qvn::dbc {
namespace {

std::int64_t signExtended(std::uint64_t raw, std::uint32_t bits) {
    const std::uint64_t sign = std::uint64_t{1} << (bits - 1);
    return static_cast<std::int64_t>((raw ^ sign) - sign);
}

template <class Number, class Bits>
double floatingPoint(Bits bits) {
    static_assert(sizeof(Number) == sizeof(Bits));
    Number number;
    std::memcpy(&number, &bits, sizeof number);
    return number;
}

/// The number that the raw value stands for, before factor and offset.
double number(const Signal& signal, std::uint64_t raw) {
    switch (signal.type) {
        case ValueType::Unsigned:
            return static_cast<double>(raw);
        case ValueType::Signed:
            return static_cast<double>(signExtended(raw, signal.bits));
        case ValueType::Float:
            return floatingPoint<float>(static_cast<std::uint32_t>(raw));
        case ValueType::Double:
            return floatingPoint<double>(raw);
    }
    return 0.0;
}

}  // namespace

std::optional<std::uint64_t> rawValue(const Signal& signal, std::string_view payload) {
    std::uint64_t raw = 0;
    std::size_t position = signal.startBit;
    for (std::uint32_t i = 0; i < signal.bits; ++i) {
        if (position / 8 >= payload.size()) {
            return std::nullopt;
        }
        const std::uint64_t bit = static_cast<unsigned char>(payload[position / 8]) >> position % 8 & 1U;
        if (signal.order == ByteOrder::Intel) {
            raw |= bit << i;
            ++position;
        } else {
            raw = raw << 1 | bit;
            position = position % 8 == 0 ? position + 15 : position - 1;  // on to the next byte's highest bit
        }
    }
    return raw;
}

double toPhysical(const Signal& signal, std::uint64_t raw) {
    return number(signal, raw) * signal.factor + signal.offset;
}

std::optional<double> physicalValue(const Signal& signal, std::string_view payload) {
    const std::optional<std::uint64_t> raw = rawValue(signal, payload);
    return raw ? std::optional<double>(toPhysical(signal, *raw)) : std::nullopt;
}

bool isPresent(const Message& message, const Signal& signal, std::string_view payload) {
    const Signal* selected = &signal;
    // A multiplexor may itself be multiplexed. In a ring of them none is present.
    for (std::size_t depth = 0; selected->selection; ++depth) {
        const Signal& multiplexor = message.signals[selected->selection->multiplexor];
        const std::optional<std::uint64_t> raw = rawValue(multiplexor, payload);
        const auto& values = selected->selection->values;
        const auto holdsRaw = [&](const Range& range) { return range.first <= *raw && *raw <= range.last; };
        if (!raw || depth == message.signals.size() || std::none_of(values.begin(), values.end(), holdsRaw)) {
            return false;
        }
        selected = &multiplexor;
    }
    return true;
}

}  // namespace qvn::dbc
