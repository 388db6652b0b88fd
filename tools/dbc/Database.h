#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace qvn::dbc {

// What a signal database (DBC file) says of the messages on a CAN bus. Texts are bytes as in the file, mostly in the
// Windows-1252 character set.

enum class ByteOrder { Motorola, Intel };
enum class ValueType { Unsigned, Signed, Float, Double };

/// First and last of raw values.
struct Range {
    std::uint64_t first = 0;
    std::uint64_t last = 0;
};

/// The condition under which a multiplexed signal is in a frame.
struct Selection {
    std::size_t multiplexor = 0;  ///< index in the message's signals
    std::vector<Range> values;    ///< the multiplexor has a raw value in one of these
};

struct Signal {
    std::string name;
    std::uint32_t startBit = 0;  ///< Intel: of the lowest bit; Motorola: of the highest. Bit 8 is the lowest of byte 1
    std::uint32_t bits = 0;      ///< 1 to 64
    ByteOrder order = ByteOrder::Intel;
    ValueType type = ValueType::Unsigned;
    double factor = 1.0;
    double offset = 0.0;
    double minimum = 0.0;  ///< both 0: not given
    double maximum = 0.0;
    std::string unit;
    std::map<std::int64_t, std::string> values;  ///< names of raw values
    bool multiplexor = false;
    std::optional<Selection> selection;  ///< without one the signal is in every frame
};

struct Message {
    std::uint32_t id = 0;
    bool extended = false;  ///< whether the id has 29 bits, else 11
    std::string name;
    std::uint32_t size = 0;           ///< bytes
    std::optional<double> cycleTime;  ///< seconds
    std::vector<Signal> signals;
};

struct Database {
    std::vector<Message> messages;
    std::vector<std::string> leftOut;  ///< what is wrong and concerns no wanted signal, by line: "NAME:LINE: ..."
};

}  // namespace qvn::dbc
