#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "can-service-sim/can/CanFrame.h"
#include "dbc/Database.h"
#include "tables/DecodingRules.h"

namespace qvn::tools {

/// What a frame says to clients of the CAN service.
struct DecodedFrame {
    struct Value {
        std::uint32_t code;
        std::string raw;  ///< in the bytes of the schema's signal, not those of the frame
        bool changed;     ///< since the last frame that had the signal
    };

    std::vector<std::uint32_t> messages;  ///< the schema's messages that carry the frame's signals
    double period = 0.0;                  ///< seconds within which a healthy bus sends the next one; 0: unknown
    std::vector<Value> values;
    std::vector<std::string> complaints;  ///< of signals that have no such value; for each signal once
};

/// Turns frames into values of the schema's signals, by a signal database that calls these by their own names, such as
/// ESP_FD2_VehSpd.
class CanDecoder {
public:
    explicit CanDecoder(dbc::Database database);
    CanDecoder(const CanDecoder&) = delete;
    CanDecoder& operator=(const CanDecoder&) = delete;

    std::size_t messages() const { return mDatabase.messages.size(); }
    std::size_t signals() const;
    std::size_t knownSignals() const;
    /// "BO_ 291 ESP: Foo, Bar": the signals that the schema does not know, by message.
    std::vector<std::string> unknownSignals() const;

    /// Whether the frame carries signals of the schema.
    bool knows(const CanFrame& frame) const { return mMessages.count(keyOf(frame.id, frame.extended)) > 0; }
    /// The schema's signals that such frames may carry.
    std::vector<std::uint32_t> signalsIn(const CanFrame& frame) const;
    DecodedFrame decode(const CanFrame& frame);
    /// Takes every value for changed that comes next.
    void forgetValues();

private:
    struct KnownSignal {
        const dbc::Signal* layout;
        const tables::DecodingRow* row;
        std::string last;
        bool complained = false;
    };
    struct KnownMessage {
        const dbc::Message* layout = nullptr;
        std::vector<std::uint32_t> messages;
        double period = 0.0;
        std::vector<KnownSignal> signals;
    };

    static std::uint64_t keyOf(std::uint32_t id, bool extended) { return std::uint64_t{extended} << 32 | id; }
    void know(const dbc::Message& message);
    static void decode(KnownSignal& signal, const CanFrame& frame, DecodedFrame& result);

    dbc::Database mDatabase;
    std::map<std::uint64_t, KnownMessage> mMessages;
};

}  // namespace qvn::tools
