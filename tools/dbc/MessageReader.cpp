#include "dbc/MessageReader.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <utility>

namespace qvn::dbc {
namespace {

constexpr std::uint32_t kExtended = 0x80000000U;
constexpr std::uint32_t kLargestExtended = 0x9FFFFFFFU;
constexpr std::uint32_t kLargestStandard = 0x7FFU;
constexpr std::uint32_t kLargestSize = 0xFFFFU;  // transport protocols have messages that take many frames
constexpr std::uint32_t kMostBits = 64;

bool isValidId(std::uint32_t id) {
    return id <= kLargestStandard || (id >= kExtended && id <= kLargestExtended) || id == kNoMessage;
}

/// START|BITS@ORDER and the sign.
void readLayout(Syntax& syntax, Signal& signal) {
    signal.startBit = syntax.whole("a start bit", 8 * kLargestSize - 1);
    syntax.mark("|");
    signal.bits = syntax.whole("a number of bits from 1 to 64", kMostBits, 1);
    syntax.mark("@");
    signal.order = syntax.whole("a byte order, 0 or 1", 1) == 1 ? ByteOrder::Intel : ByteOrder::Motorola;
    if (syntax.takeIf("-")) {
        signal.type = ValueType::Signed;
    } else if (!syntax.takeIf("+")) {
        syntax.fail("'+' or '-' after the byte order");
    }
}

/// M: a multiplexor; mN: a signal of the frames in which that has the value N; mNM: both.
void readMultiplexor(Syntax& syntax, Signal& signal) {
    constexpr const char* kWhat = "':', M, or m with a number";
    const Token token = syntax.peek();
    const std::string_view word = syntax.name(kWhat);
    if (word != "M") {
        std::uint32_t value = 0;
        const char* const end = word.data() + word.size();
        const auto number = std::from_chars(word.data() + 1, end, value);
        const bool last = number.ptr == end || (number.ptr == end - 1 && word.back() == 'M');
        if (word[0] != 'm' || number.ec != std::errc() || !last) {
            syntax.fail(kWhat, token);
        }
        signal.selection = Selection{0, {{value, value}}};
    }
    signal.multiplexor = word.back() == 'M';
}

void readSignal(Syntax& syntax, const Message& message, std::uint32_t fileId, Signal& signal) {
    const Token name = syntax.peek();
    signal.name = syntax.name("the name of a signal");
    if (findSignal(message, signal.name)) {
        syntax.fail("a name that no other signal of the message has", name);
    }
    syntax.enter("in the signal BO_ " + std::to_string(fileId) + " " + shown(signal.name));
    if (!syntax.peek().is(":")) {
        readMultiplexor(syntax, signal);
    }
    syntax.mark(":");
    readLayout(syntax, signal);
    syntax.mark("(");
    signal.factor = syntax.number();
    syntax.mark(",");
    signal.offset = syntax.number();
    syntax.mark(")");
    syntax.mark("[");
    signal.minimum = syntax.number();
    syntax.mark("|");
    signal.maximum = syntax.number();
    syntax.mark("]");
    signal.unit = syntax.text();
    syntax.skipRestOfLine();
}

/// Unless a later section says more, this one selects all multiplexed signals.
bool isRoot(const Signal& signal) {
    return signal.multiplexor && !signal.selection;
}

/// Reads the signals that are right. Returns the place of the fault because of which there is no root, if there is one.
std::optional<std::size_t> readSignals(Syntax& syntax, Message& message, std::uint32_t fileId,
                                       std::vector<Fault>& faults) {
    const std::string place = "in the message BO_ " + std::to_string(fileId);
    std::optional<std::size_t> brokenRoot;
    while (syntax.takeIf("SG_")) {
        syntax.enter(place);
        Signal signal;
        try {
            readSignal(syntax, message, fileId, signal);
            message.signals.push_back(std::move(signal));
        } catch (const Mistake& mistake) {
            brokenRoot = isRoot(signal) ? faults.size() : brokenRoot;
            faults.push_back({mistake, {{fileId, signal.name}}});
            syntax.skipSection();
        }
    }
    return brokenRoot;
}

/// Without a root the multiplexed signals are left out.
void leaveOutMultiplexed(Message& message, std::uint32_t fileId, Fault& fault) {
    auto& signals = message.signals;
    const auto isPlain = [](const Signal& signal) { return !signal.selection; };
    const auto multiplexed = std::stable_partition(signals.begin(), signals.end(), isPlain);
    for (auto signal = multiplexed; signal != signals.end(); ++signal) {
        fault.signals.emplace_back(fileId, signal->name);
    }
    signals.erase(multiplexed, signals.end());
}

}  // namespace

Message readMessage(Syntax& syntax, std::uint32_t* fileId, std::vector<Fault>& faults) {
    const Token id = syntax.peek();
    *fileId = syntax.whole("the id of a message", kLargestId);
    syntax.enter("in the message BO_ " + std::to_string(*fileId));
    if (!isValidId(*fileId)) {
        syntax.fail("an id up to 2047, or an extended one with bit 31", id);
    }
    Message message;
    message.extended = *fileId >= kExtended;
    message.id = *fileId & ~kExtended;
    message.name = syntax.name("a name");
    syntax.mark(":");
    message.size = syntax.whole("a number of bytes", kLargestSize);
    syntax.skipRestOfLine();
    const std::optional<std::size_t> brokenRoot = readSignals(syntax, message, *fileId, faults);
    auto& signals = message.signals;
    const auto root = std::find_if(signals.begin(), signals.end(), &isRoot);
    const auto multiplexed =
        std::find_if(signals.begin(), signals.end(), [](const Signal& signal) { return signal.selection.has_value(); });
    if (root != signals.end()) {
        for (Signal& signal : signals) {
            if (signal.selection) {
                signal.selection->multiplexor = static_cast<std::size_t>(root - signals.begin());
            }
        }
    } else if (brokenRoot) {
        leaveOutMultiplexed(message, *fileId, faults[*brokenRoot]);
    } else if (multiplexed != signals.end()) {
        faults.push_back(
            {syntax.mistake(id.line, "the message " + shown(message.name) + " has multiplexed signals such as " +
                                         shown(multiplexed->name) + "; expected a signal with M that selects them"),
             {}});
        leaveOutMultiplexed(message, *fileId, faults.back());
    }
    return message;
}

std::optional<std::size_t> findSignal(const Message& message, std::string_view name) {
    const auto found = std::find_if(message.signals.begin(), message.signals.end(),
                                    [name](const Signal& signal) { return signal.name == name; });
    const auto place = static_cast<std::size_t>(found - message.signals.begin());
    return found == message.signals.end() ? std::nullopt : std::optional<std::size_t>(place);
}

}  // namespace qvn::dbc
