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
    Reader(std::istream& input, const std::string& name) : mSyntax(contentOf(input, name), name) {}

    Database read(const Wanted& wanted);

private:
    using Section = void (Reader::*)();

    static Section sectionNamed(std::string_view keyword);
    void readSection();
    void leaveOut(const Mistake& mistake);
    void end();
    void skip() { mSyntax.skipSection(); }
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
    Signal& at(const SignalPlace& place) { return mDatabase.messages[place.message].signals[place.signal]; }

    Syntax mSyntax;
    Database mDatabase;
    std::map<std::uint32_t, std::size_t> mMessages;  // places, by the id as it is in the file
    std::uint32_t mLastMessage = 0;                  // its id in the file
    std::map<std::string, ValueNames, std::less<>> mValueTables;
    std::map<std::uint32_t, std::optional<double>> mCycleTimes;
    std::optional<double> mDefaultCycleTime;
    std::map<SignalKey, std::string> mLongNames;
    std::vector<Fault> mFaults;
    std::vector<SignalKey> mConcerned;  // by the section that is being read
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
    const auto found = mLongNames.find(key);
    return found == mLongNames.end() ? key.second : found->second;
}

/// What is wrong is left out, unless it matters.
void Reader::judgeFaults(const Wanted& wanted) {
    std::stable_sort(mFaults.begin(), mFaults.end(),
                     [](const Fault& a, const Fault& b) { return a.mistake.line() < b.mistake.line(); });
    const auto matters = [&](const SignalKey& key) { return wanted(fullName(key)); };
    for (const Fault& fault : mFaults) {
        if (mDatabase.messages.empty() || std::any_of(fault.signals.begin(), fault.signals.end(), matters)) {
            throw SyntaxError(fault.mistake.what());
        }
        mDatabase.leftOut.emplace_back(fault.mistake.what());
    }
}

Database Reader::read(const Wanted& wanted) {
    while (!mSyntax.atEnd()) {
        readSection();
    }
    judgeFaults(wanted);
    for (const auto& [id, place] : mMessages) {
        const auto given = mCycleTimes.find(id);
        Message& message = mDatabase.messages[place];
        message.cycleTime = given == mCycleTimes.end() ? mDefaultCycleTime : given->second;
        for (Signal& signal : message.signals) {
            signal.name = fullName({id, signal.name});  // nothing uses the short one any more
        }
    }
    return std::move(mDatabase);
}

void Reader::readSection() {
    constexpr const char* kWhat = "a keyword such as BO_";
    mConcerned.clear();
    mSyntax.enter("at the beginning of a section");
    try {
        const Token keyword = mSyntax.peek();
        const Section known = sectionNamed(keyword.text);
        if (!std::all_of(keyword.text.begin(), keyword.text.end(), &isOfKeyword)) {
            mSyntax.fail(kWhat);
        }
        mSyntax.name(kWhat);
        mSyntax.enter("in the section " + std::string(keyword.text));
        (this->*(known ? known : &Reader::skip))();
    } catch (const Mistake& mistake) {
        leaveOut(mistake);
    }
}

/// The ';' at the end of a section. Where it alone is missing nothing is lost.
void Reader::end() {
    if (mSyntax.takeIf(";")) {
        return;
    }
    try {
        mSyntax.fail("';'");
    } catch (const Mistake& mistake) {
        if (!mSyntax.atSectionEnd()) {
            throw;
        }
        mFaults.push_back({mistake, {}});
    }
}

/// Passes over the section that is wrong, and over signals that follow: those of a message that is wrong.
void Reader::leaveOut(const Mistake& mistake) {
    skip();
    while (mSyntax.takeIf("SG_")) {
        mConcerned.emplace_back(mLastMessage, mSyntax.peek().text);
        skip();
    }
    mFaults.push_back({mistake, mConcerned});
}

/// The keywords that the file may use: each stands alone on its line, as no section's own keyword does.
void Reader::readNewSymbols() {
    mSyntax.skipRestOfLine();
    while (!mSyntax.atEnd() && mSyntax.peek().endsLine) {
        mSyntax.take();
    }
}

void Reader::readMessage() {
    const int line = mSyntax.peek().line;
    std::vector<Fault> faults;
    Message message = dbc::readMessage(mSyntax, &mLastMessage, faults);
    const std::uint32_t id = mLastMessage;
    if (id == kNoMessage) {
        return;
    }
    std::move(faults.begin(), faults.end(), std::back_inserter(mFaults));
    if (!mMessages.emplace(id, mDatabase.messages.size()).second) {
        concern(id, message);
        throw mSyntax.mistake(line, "there are two messages BO_ " + std::to_string(id) + "; expected one");
    }
    mDatabase.messages.push_back(std::move(message));
}

void Reader::concern(std::uint32_t id, const Message& message) {
    for (const Signal& signal : message.signals) {
        mConcerned.emplace_back(id, signal.name);
    }
}

void Reader::readStraySignal() {
    mConcerned.emplace_back(mLastMessage, mSyntax.peek().text);
    mSyntax.fail("a message BO_ before its signals");
}

std::optional<SignalPlace> Reader::takeSignal() {
    const std::uint32_t id = mSyntax.whole("the id of a message", kLargestId);
    const std::string_view name = mSyntax.name("the name of a signal");
    mConcerned = {{id, std::string(name)}};
    const auto message = mMessages.find(id);
    if (message == mMessages.end()) {
        return std::nullopt;
    }
    const auto signal = findSignal(mDatabase.messages[message->second], name);
    return signal ? std::optional<SignalPlace>({message->second, *signal}) : std::nullopt;
}

std::optional<double> Reader::readCycleTime() {
    constexpr const char* kWhat = "a cycle time in milliseconds";
    const Token token = mSyntax.peek();
    const double milliseconds = mSyntax.number(kWhat);
    if (milliseconds < 0.0 || milliseconds > kLongestCycle) {
        mSyntax.fail(kWhat, token);
    }
    return milliseconds > 0.0 ? std::optional<double>(milliseconds / 1000.0) : std::nullopt;
}

void Reader::readAttributeDefault() {
    if (mSyntax.text() != kCycleTime) {
        skip();
        return;
    }
    mDefaultCycleTime = readCycleTime();
    end();
}

void Reader::readAttribute() {
    const std::string name = mSyntax.text();
    if (name == kCycleTime && mSyntax.takeIf("BO_")) {
        const std::uint32_t id = mSyntax.whole("the id of a message", kLargestId);
        if (const auto message = mMessages.find(id); message != mMessages.end()) {
            concern(id, mDatabase.messages[message->second]);
        }
        mCycleTimes[id] = readCycleTime();
    } else if (name == kLongName && mSyntax.takeIf("SG_")) {
        takeSignal();
        mLongNames[mConcerned.front()] = mSyntax.text();
    } else {
        skip();
        return;
    }
    end();
}

ValueNames Reader::readNames() {
    ValueNames names;
    while (!mSyntax.peek().is(";") && !mSyntax.atSectionEnd()) {
        const std::int64_t value = mSyntax.wide("a whole number or ';'");
        names[value] = mSyntax.text();
    }
    end();
    return names;
}

void Reader::readValueTable() {
    std::string name(mSyntax.name("the name of a table"));
    mValueTables[std::move(name)] = readNames();
}

void Reader::readValueNames() {
    const bool ofSignal = mSyntax.peek().kind == Token::Word &&
                          mSyntax.peek().text.find_first_not_of("0123456789") == std::string_view::npos;
    if (!ofSignal) {
        skip();  // those of an environment variable
        return;
    }
    const auto place = takeSignal();
    const auto table = mValueTables.find(mSyntax.peek().text);
    const bool named = table != mValueTables.end();
    if (named) {
        mSyntax.take();
        end();
    }
    ValueNames names = named ? table->second : readNames();
    if (place) {
        at(*place).values = std::move(names);
    }
}

void Reader::readValueType() {
    const auto place = takeSignal();
    mSyntax.takeIf(":");
    const Token token = mSyntax.peek();
    const std::uint32_t type = mSyntax.whole("0, 1 (float) or 2 (double)", 2);
    end();
    if (!place || type == 0) {
        return;
    }
    Signal& signal = at(*place);
    if (signal.bits != 32 * type) {
        mSyntax.fail("the type of a signal of " + std::to_string(signal.bits) + " bits", token);
    }
    signal.type = type == 1 ? ValueType::Float : ValueType::Double;
}

/// Which values of which multiplexor select a signal.
void Reader::readMultiplexing() {
    const auto place = takeSignal();
    const Token word = mSyntax.peek();
    const std::string_view name = mSyntax.name("the name of a multiplexor");
    const auto multiplexor = place ? findSignal(mDatabase.messages[place->message], name) : std::nullopt;
    if (place && !multiplexor) {
        mSyntax.fail("a signal of the same message", word);
    }
    std::vector<Range> ranges;
    do {
        const std::uint64_t first = mSyntax.whole("the range of values", kLargestId);
        ranges.push_back({first, mSyntax.rangeEnd()});
    } while (mSyntax.takeIf(","));
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
