#include "dbc/Reader.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <string_view>
#include <utility>

#include "dbc/MessageReader.h"
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
    Reader(std::istream& input, const std::string& name) : syntax_(contentOf(input, name), name) {}

    Database read(const Wanted& wanted);

private:
    using Section = void (Reader::*)();

    static Section sectionNamed(std::string_view keyword);
    void readSection();
    void leaveOut(const Mistake& mistake);
    void end();
    void skip() { syntax_.skipSection(); }
    std::string fullName(const SignalKey& key) const;
    void judgeFaults(const Wanted& wanted);

    void readNewSymbols();
    void readMessage();
    void readStraySignal();
    void concern(std::uint32_t id, const Message& message);
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
    Database database_;
    std::map<std::uint32_t, std::size_t> messages_;  // places, by the id as it is in the file
    std::uint32_t lastMessage_ = 0;                  // its id in the file
    std::map<std::string, ValueNames, std::less<>> valueTables_;
    std::map<std::uint32_t, std::optional<double>> cycleTimes_;
    std::optional<double> defaultCycleTime_;
    std::map<SignalKey, std::string> longNames_;
    std::vector<Fault> faults_;
    std::vector<SignalKey> concerned_;  // by the section that is being read
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

std::string Reader::fullName(const SignalKey& key) const {
    const auto found = longNames_.find(key);
    return found == longNames_.end() ? key.second : found->second;
}

/// What is wrong is left out, unless it matters.
void Reader::judgeFaults(const Wanted& wanted) {
    std::stable_sort(faults_.begin(), faults_.end(),
                     [](const Fault& a, const Fault& b) { return a.mistake.line() < b.mistake.line(); });
    const auto matters = [&](const SignalKey& key) { return wanted(fullName(key)); };
    for (const Fault& fault : faults_) {
        if (database_.messages.empty() || std::any_of(fault.signals.begin(), fault.signals.end(), matters)) {
            throw SyntaxError(fault.mistake.what());
        }
        database_.leftOut.emplace_back(fault.mistake.what());
    }
}

Database Reader::read(const Wanted& wanted) {
    while (!syntax_.atEnd()) {
        readSection();
    }
    judgeFaults(wanted);
    for (const auto& [id, place] : messages_) {
        const auto given = cycleTimes_.find(id);
        Message& message = database_.messages[place];
        message.cycleTime = given == cycleTimes_.end() ? defaultCycleTime_ : given->second;
        for (Signal& signal : message.signals) {
            signal.name = fullName({id, signal.name});  // nothing uses the short one any more
        }
    }
    return std::move(database_);
}

void Reader::readSection() {
    constexpr const char* kWhat = "a keyword such as BO_";
    concerned_.clear();
    syntax_.enter("at the beginning of a section");
    try {
        const Token keyword = syntax_.peek();
        const Section known = sectionNamed(keyword.text);
        if (!std::all_of(keyword.text.begin(), keyword.text.end(), &isOfKeyword)) {
            syntax_.fail(kWhat);
        }
        syntax_.name(kWhat);
        syntax_.enter("in the section " + std::string(keyword.text));
        (this->*(known ? known : &Reader::skip))();
    } catch (const Mistake& mistake) {
        leaveOut(mistake);
    }
}

/// The ';' at the end of a section. Where it alone is missing nothing is lost.
void Reader::end() {
    if (syntax_.takeIf(";")) {
        return;
    }
    try {
        syntax_.fail("';'");
    } catch (const Mistake& mistake) {
        if (!syntax_.atSectionEnd()) {
            throw;
        }
        faults_.push_back({mistake, {}});
    }
}

/// Passes over the section that is wrong, and over signals that follow: those of a message that is wrong.
void Reader::leaveOut(const Mistake& mistake) {
    skip();
    while (syntax_.takeIf("SG_")) {
        concerned_.emplace_back(lastMessage_, syntax_.peek().text);
        skip();
    }
    faults_.push_back({mistake, concerned_});
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
    std::vector<Fault> faults;
    Message message = dbc::readMessage(syntax_, &lastMessage_, faults);
    const std::uint32_t id = lastMessage_;
    if (id == kNoMessage) {
        return;
    }
    std::move(faults.begin(), faults.end(), std::back_inserter(faults_));
    if (!messages_.emplace(id, database_.messages.size()).second) {
        concern(id, message);
        throw syntax_.mistake(line, "there are two messages BO_ " + std::to_string(id) + "; expected one");
    }
    database_.messages.push_back(std::move(message));
}

void Reader::concern(std::uint32_t id, const Message& message) {
    for (const Signal& signal : message.signals) {
        concerned_.emplace_back(id, signal.name);
    }
}

void Reader::readStraySignal() {
    concerned_.emplace_back(lastMessage_, syntax_.peek().text);
    syntax_.fail("a message BO_ before its signals");
}

std::optional<SignalPlace> Reader::takeSignal() {
    const std::uint32_t id = syntax_.whole("the id of a message", kLargestId);
    const std::string_view name = syntax_.name("the name of a signal");
    concerned_ = {{id, std::string(name)}};
    const auto message = messages_.find(id);
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
    end();
}

void Reader::readAttribute() {
    const std::string name = syntax_.text();
    if (name == kCycleTime && syntax_.takeIf("BO_")) {
        const std::uint32_t id = syntax_.whole("the id of a message", kLargestId);
        if (const auto message = messages_.find(id); message != messages_.end()) {
            concern(id, database_.messages[message->second]);
        }
        cycleTimes_[id] = readCycleTime();
    } else if (name == kLongName && syntax_.takeIf("SG_")) {
        takeSignal();
        longNames_[concerned_.front()] = syntax_.text();
    } else {
        skip();
        return;
    }
    end();
}

ValueNames Reader::readNames() {
    ValueNames names;
    while (!syntax_.peek().is(";") && !syntax_.atSectionEnd()) {
        const std::int64_t value = syntax_.wide("a whole number or ';'");
        names[value] = syntax_.text();
    }
    end();
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
        end();
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
    end();
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
    end();
    if (place) {
        at(*place).selection = Selection{*multiplexor, std::move(ranges)};
    }
}

}  // namespace

Database readDatabase(std::istream& input, const std::string& name, const Wanted& wanted) {
    return Reader(input, name).read(wanted);
}

}  // namespace qvn::dbc
