#include "dbc/MessageReader.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <utility>

#include "dbc/Reader.h"
#include "dbc/Sections.h"

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

void readSignal(Syntax& syntax, Message& message, std::uint32_t fileId) {
    const Token name = syntax.peek();
    Signal signal;
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
    message.signals.push_back(std::move(signal));
}

/// Passes over the rest of a signal; false when the message ends there.
bool skipSignal(Syntax& syntax) {
    while (!syntax.atEnd() && !(syntax.peek().startsLine && isSectionBegin(syntax.peek()))) {
        syntax.take();
    }
    return syntax.takeIf("SG_");
}

void readSignals(Syntax& syntax, const IsWanted& isWanted, Message& message, std::uint32_t fileId) {
    const std::string place = "in the message BO_ " + std::to_string(fileId);
    for (bool more = syntax.takeIf("SG_"); more;) {
        const Token name = syntax.peek();
        try {
            syntax.enter(place);
            readSignal(syntax, message, fileId);
            more = syntax.takeIf("SG_");
        } catch (const SyntaxError& error) {
            if (isWanted(name.text)) {
                throw;
            }
            syntax.leaveOut(error.what());
            more = skipSignal(syntax);
        }
    }
}

/// Passes over a message that cannot be used, unless it carries a signal that somebody wants.
void leaveOutMessage(Syntax& syntax, const IsWanted& isWanted, const SyntaxError& error) {
    syntax.leaveOut(error.what());
    while (skipSignal(syntax)) {
        if (isWanted(syntax.peek().text)) {
            throw error;
        }
    }
}

/// Unless a later section says more, one multiplexor selects all multiplexed signals.
void resolveMultiplexing(Syntax& syntax, const IsWanted& isWanted, Message& message, int line) {
    const auto isRoot = [](const Signal& signal) { return signal.multiplexor && !signal.selection; };
    auto& signals = message.signals;
    if (std::none_of(signals.begin(), signals.end(), isRoot)) {
        const auto lost = [&](const Signal& signal) {
            if (!signal.selection) {
                return false;
            }
            const std::string problem = "the message " + shown(message.name) + " has multiplexed signals such as " +
                                        shown(signal.name) + "; expected a signal with M that selects them";
            isWanted(signal.name) ? syntax.wrong(line, problem) : syntax.leaveOut(syntax.at(line, problem));
            return true;
        };
        signals.erase(std::remove_if(signals.begin(), signals.end(), lost), signals.end());
    }
    const auto root = std::find_if(signals.begin(), signals.end(), isRoot);
    for (Signal& signal : signals) {
        if (signal.selection) {
            signal.selection->multiplexor = static_cast<std::size_t>(root - signals.begin());
        }
    }
}

Message readHead(Syntax& syntax, std::uint32_t* fileId) {
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
    return message;
}

}  // namespace

std::optional<Message> readMessage(Syntax& syntax, const IsWanted& isWanted, std::uint32_t* fileId) {
    const int line = syntax.peek().line;
    Message message;
    try {
        message = readHead(syntax, fileId);
    } catch (const SyntaxError& error) {
        leaveOutMessage(syntax, isWanted, error);
        return std::nullopt;
    }
    readSignals(syntax, isWanted, message, *fileId);
    resolveMultiplexing(syntax, isWanted, message, line);
    return message;
}

std::optional<std::size_t> findSignal(const Message& message, std::string_view name) {
    const auto found = std::find_if(message.signals.begin(), message.signals.end(),
                                    [name](const Signal& signal) { return signal.name == name; });
    const auto place = static_cast<std::size_t>(found - message.signals.begin());
    return found == message.signals.end() ? std::nullopt : std::optional<std::size_t>(place);
}

}  // namespace qvn::dbc
