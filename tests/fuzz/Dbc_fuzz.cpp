// The reader of signal databases, and the decoder by what was read: the input is one byte, the length of a payload that
// is the beginning of the text, and the text of a database.

#include <algorithm>
#include <cstdint>
#include <sstream>
#include <string>

#include "Require.h"
#include "dbc/Reader.h"
#include "dbc/Values.h"

namespace {

using namespace qvn::dbc;
using qvn::fuzz::require;

bool isWanted(const std::string& signal) {
    return !signal.empty() && signal.size() % 2 == 0;
}

void requireSound(const Message& message, const std::string& payload) {
    require(message.id <= (message.extended ? 0x1FFFFFFFU : 0x7FFU));
    require(!message.cycleTime || (*message.cycleTime > 0.0 && *message.cycleTime <= 1e6));
    for (const Signal& signal : message.signals) {
        require(signal.bits >= 1 && signal.bits <= 64);
        require(!signal.selection || signal.selection->multiplexor < message.signals.size());
        const auto raw = rawValue(signal, payload);
        require(!raw || signal.bits == 64 || *raw >> signal.bits == 0);
        require(physicalValue(signal, payload).has_value() == raw.has_value());
        isPresent(message, signal, payload);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::string text(data + 1, data + size);
    std::istringstream input(text);
    try {
        for (const Message& message : readDatabase(input, "dbc", &isWanted).messages) {
            requireSound(message, text.substr(0, data[0]));
        }
    } catch (const SyntaxError& error) {
        const std::string reason = error.what();
        require(reason.rfind("dbc:", 0) == 0 && reason.find('\n') == std::string::npos);
    }
    return 0;
}
