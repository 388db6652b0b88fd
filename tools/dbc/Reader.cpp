#include "dbc/Reader.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <string_view>
#include <utility>

#include "dbc/MessageReader.h"
#include "dbc/Sections.h"
#include "dbc/Syntax.h"

namespace qvn::dbc {
namespace {

using ValueNames = std::map<std::int64_t, std::string>;

constexpr double kLongestCycle = 1e9;  // milliseconds
constexpr std::string_view kCycleTime = "GenMsgCycleTime";
constexpr std::string_view kLongName = "SystemSignalLongSymbol";  // of a signal whose name is cut to 32 characters

std::string contentOf(std::istream& input, const std::string& name) {
    std::string content((std::istreambuf_iterator<char>(input)), std::istreambuf_iterator<char>());
    if (input.bad()) {
        throw SyntaxError(name + " cannot be read");
    }
    return content;
}

/// A signal by the place of its message and its own in there.
struct SignalPlace {
    std::size_t message = 0;
    std::size_t signal = 0;
};

/// Reads the sections one after the other.
class Reader {
public:
    Reader(std::istream& input, const std::string& name, IsWanted isWanted)
        : syntax_(contentOf(input, name), name), isWanted_(std::move(isWanted)) {}

    using Section = void (Reader::*)();

    static Section sectionNamed(std::string_view keyword);

    Database read();

private:
    void readSection();
    void readKnown(Section section);
    void skip();

    void readNewSymbols();
    void readMessage();
    void readRubbish();
    void readStraySignal();
    void readAttribute();
    void readAttributeDefault();
    void readValueTable();
    void readValueNames();
    void readValueType();
    void readMultiplexing();

    std::optional<double> readCycleTime();
    ValueNames readNames();

    /// The signal that the next words name, if it is there.
    std::optional<SignalPlace> takeSignal();
    Signal& at(const SignalPlace& place) { return database_.messages[place.message].signals[place.signal]; }

    Syntax syntax_;
    const IsWanted isWanted_;
    Database database_;
    std::string about_;                              // the signal that the section is about, as soon as it is known
    std::map<std::uint32_t, std::size_t> messages_;  // places, by the id as it is in the file
    std::map<std::string, ValueNames, std::less<>> valueTables_;
    std::map<std::uint32_t, std::optional<double>> cycleTimes_;
    std::optional<double> defaultCycleTime_;
    std::vector<std::pair<SignalPlace, std::string>> longNames_;  // known once nothing uses the short ones any more
};

Reader::Section Reader::sectionNamed(std::string_view keyword) {
    static const std::map<std::string_view, Section> kSections = {
        {"VERSION", &Reader::skip},
        {"NS_", &Reader::readNewSymbols},
        {"BS_", &Reader::skip},
        {"BU_", &Reader::skip},
        {"VAL_TABLE_", &Reader::readValueTable},
        {"BO_", &Reader::readMessage},
        {"SG_", &Reader::readStraySignal},
        {"CM_", &Reader::skip},
        {"BA_DEF_", &Reader::skip},
        {"BA_DEF_DEF_", &Reader::readAttributeDefault},
        {"BA_", &Reader::readAttribute},
        {"VAL_", &Reader::readValueNames},
        {"SIG_VALTYPE_", &Reader::readValueType},
        {"SG_MUL_VAL_", &Reader::readMultiplexing},
    };
    const auto found = kSections.find(keyword);
    return found == kSections.end() ? nullptr : found->second;
}

Database Reader::read() {
    while (!syntax_.atEnd()) {
        readSection();
    }
    for (const auto& [id, place] : messages_) {
        const auto given = cycleTimes_.find(id);
        database_.messages[place].cycleTime = given == cycleTimes_.end() ? defaultCycleTime_ : given->second;
    }
    for (auto& [place, name] : longNames_) {
        at(place).name = std::move(name);
    }
    database_.leftOut = syntax_.leftOut();
    return std::move(database_);
}

void Reader::readSection() {
    const auto ofKeyword = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_'; };
    syntax_.enter("at the beginning of a section");
    const Token keyword = syntax_.peek();
    if (keyword.kind != Token::Word || !std::all_of(keyword.text.begin(), keyword.text.end(), ofKeyword)) {
        readKnown(&Reader::readRubbish);
        return;
    }
    syntax_.take();
    syntax_.enter("in the section " + std::string(keyword.text));
    const Section known = sectionNamed(keyword.text);
    readKnown(known ? known : &Reader::skip);
}

void Reader::readKnown(Section section) {
    about_.clear();
    try {
        (this->*section)();
    } catch (const SyntaxError& error) {
        // What begins with rubbish is no signal database.
        if (section == &Reader::readMessage || isWanted_(about_) || database_.messages.empty()) {
            throw;
        }
        syntax_.leaveOut(error.what());
        skip();
    }
}

/// Passes over the rest of a section. Some end with a ';', others where the next one begins.
void Reader::skip() {
    while (!syntax_.atEnd() && !(syntax_.peek().startsLine && isSectionBegin(syntax_.peek()))) {
        if (syntax_.take().is(";")) {
            return;
        }
    }
}

/// The keywords that the file may use: each stands alone on its line, as no section's own keyword does.
void Reader::readNewSymbols() {
    syntax_.skipRestOfLine();
    while (!syntax_.atEnd() && syntax_.peek().endsLine) {
        syntax_.take();
    }
}

void Reader::readMessage() {
    const int line = syntax_.peek().line;
    std::uint32_t id = 0;
    std::optional<Message> message = dbc::readMessage(syntax_, isWanted_, &id);
    if (!message || id == kNoMessage) {
        return;
    }
    if (messages_.emplace(id, database_.messages.size()).second) {
        database_.messages.push_back(std::move(*message));
        return;
    }
    const std::string problem = "there are two messages BO_ " + std::to_string(id) + "; expected one";
    const auto isWanted = [this](const Signal& signal) { return isWanted_(signal.name); };
    if (std::any_of(message->signals.begin(), message->signals.end(), isWanted)) {
        syntax_.wrong(line, problem);
    }
    syntax_.leaveOut(syntax_.at(line, problem));
}

void Reader::readRubbish() {
    syntax_.fail("a keyword such as BO_");
}

void Reader::readStraySignal() {
    syntax_.fail("a message BO_ before its signals");
}

std::optional<SignalPlace> Reader::takeSignal() {
    const auto message = messages_.find(syntax_.whole("the id of a message", kLargestId));
    const std::string_view name = syntax_.name("the name of a signal");
    about_ = name;
    if (message == messages_.end()) {
        return std::nullopt;
    }
    const auto signal = findSignal(database_.messages[message->second], name);
    return signal ? std::optional<SignalPlace>({message->second, *signal}) : std::nullopt;
}

std::optional<double> Reader::readCycleTime() {
    constexpr const char* kWhat = "a cycle time in milliseconds";
    const Token token = syntax_.peek();
    const double milliseconds = syntax_.number(kWhat);
    if (milliseconds < 0.0 || milliseconds > kLongestCycle) {
        syntax_.fail(kWhat, token);
    }
    return milliseconds > 0.0 ? std::optional<double>(milliseconds / 1000.0) : std::nullopt;
}

void Reader::readAttributeDefault() {
    if (syntax_.text() != kCycleTime) {
        skip();
        return;
    }
    defaultCycleTime_ = readCycleTime();
    syntax_.end();
}

void Reader::readAttribute() {
    const std::string name = syntax_.text();
    if (name == kCycleTime && syntax_.takeIf("BO_")) {
        const std::uint32_t id = syntax_.whole("the id of a message", kLargestId);
        cycleTimes_[id] = readCycleTime();
    } else if (name == kLongName && syntax_.takeIf("SG_")) {
        const auto place = takeSignal();
        std::string longName = syntax_.text();
        if (place) {
            longNames_.emplace_back(*place, std::move(longName));
        }
    } else {
        skip();
        return;
    }
    syntax_.end();
}

ValueNames Reader::readNames() {
    ValueNames names;
    while (!syntax_.peek().is(";") && !syntax_.atEnd() && !isSectionBegin(syntax_.peek())) {
        const std::int64_t value = syntax_.wide();
        names[value] = syntax_.text();
    }
    syntax_.end();
    return names;
}

void Reader::readValueTable() {
    std::string name(syntax_.name("the name of a table"));
    valueTables_[std::move(name)] = readNames();
}

void Reader::readValueNames() {
    const bool ofSignal = syntax_.peek().kind == Token::Word &&
                          syntax_.peek().text.find_first_not_of("0123456789") == std::string_view::npos;
    if (!ofSignal) {
        skip();  // those of an environment variable
        return;
    }
    const auto place = takeSignal();
    const auto table = valueTables_.find(syntax_.peek().text);
    const bool named = table != valueTables_.end();
    if (named) {
        syntax_.take();
        syntax_.end();
    }
    ValueNames names = named ? table->second : readNames();
    if (place) {
        at(*place).values = std::move(names);
    }
}

void Reader::readValueType() {
    const auto place = takeSignal();
    syntax_.takeIf(":");
    const Token token = syntax_.peek();
    const std::uint32_t type = syntax_.whole("0, 1 (float) or 2 (double)", 2);
    syntax_.end();
    if (!place || type == 0) {
        return;
    }
    Signal& signal = at(*place);
    if (signal.bits != 32 * type) {
        syntax_.fail("the type of a signal of " + std::to_string(signal.bits) + " bits", token);
    }
    signal.type = type == 1 ? ValueType::Float : ValueType::Double;
}

/// Which values of which multiplexor select a signal.
void Reader::readMultiplexing() {
    const auto place = takeSignal();
    const Token word = syntax_.peek();
    const std::string_view name = syntax_.name("the name of a multiplexor");
    const auto multiplexor = place ? findSignal(database_.messages[place->message], name) : std::nullopt;
    if (place && !multiplexor) {
        syntax_.fail("a signal of the same message", word);
    }
    std::vector<Range> ranges;
    do {
        const std::uint64_t first = syntax_.whole("the range of values", kLargestId);
        ranges.push_back({first, syntax_.rangeEnd()});
    } while (syntax_.takeIf(","));
    syntax_.end();
    if (place) {
        at(*place).selection = Selection{*multiplexor, std::move(ranges)};
    }
}

}  // namespace

bool isSectionBegin(const Token& token) {
    return token.kind == Token::Word && Reader::sectionNamed(token.text) != nullptr;
}

Database readDatabase(std::istream& input, const std::string& name, std::function<bool(std::string_view)> isWanted) {
    return Reader(input, name, std::move(isWanted)).read();
}

}  // namespace qvn::dbc
