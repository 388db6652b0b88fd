#include "desk/DatabaseNotes.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <fstream>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>

#include "dbc/Reader.h"
#include "desk/BadInput.h"
#include "desk/SignalNames.h"

namespace qvn::tools {
namespace {

/// The text in ASCII. A file is in Windows-1252 or in UTF-8, and nothing tells which: longer bytes come first.
std::string plain(const std::string& text) {
    static constexpr std::pair<std::string_view, std::string_view> kSigns[] = {
        {"\xE2\x84\xA6", "Ohm"}, {"\xCE\xA9", "Ohm"}, {"\xC2\xB0", "deg"}, {"\xC2\xB5", "u"},
        {"\xCE\xBC", "u"},       {"\xC2\xB2", "^2"},  {"\xC2\xB3", "^3"},  {"\xB0", "deg"},
        {"\xB5", "u"},           {"\xB2", "^2"},      {"\xB3", "^3"},
    };
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        const auto sign = std::find_if(std::begin(kSigns), std::end(kSigns), [&](const auto& known) {
            return text.compare(at, known.first.size(), known.first) == 0;
        });
        if (sign != std::end(kSigns)) {
            result += sign->second;
            at += sign->first.size();
        } else {
            result += text[at] >= ' ' && text[at] <= '~' ? text[at] : '?';
            ++at;
        }
    }
    return result;
}

/// One word that no number begins like: "Not available" becomes Not_available, "2nd" _2nd.
std::string asWord(std::string name) {
    const auto isOther = [](unsigned char c) { return std::isalnum(c) == 0 && c != '-' && c != '.' && c != '/'; };
    std::replace_if(name.begin(), name.end(), isOther, '_');
    return name.empty() || std::isalpha(static_cast<unsigned char>(name[0])) != 0 ? name : "_" + name;
}

/// A raw value that a database gives a name, in the signal's unit.
double physicalOf(const dbc::Signal& signal, std::int64_t raw) {
    const double number = signal.type == dbc::ValueType::Unsigned ? static_cast<double>(static_cast<std::uint64_t>(raw))
                                                                  : static_cast<double>(raw);
    return number * signal.factor + signal.offset;
}

SignalNote noteOf(const dbc::Signal& signal) {
    SignalNote note;
    note.unit = plain(signal.unit);
    if (signal.minimum < signal.maximum) {
        note.range = {signal.minimum, signal.maximum};
    }
    for (const auto& [raw, name] : signal.values) {
        const double value = physicalOf(signal, raw);
        if (value == std::floor(value) && std::fabs(value) < 1e9 && !name.empty()) {
            note.values[static_cast<std::int32_t>(value)] = asWord(name);
        }
    }
    return note;
}

}  // namespace

dbc::Database readDatabaseFile(const std::string& path) {
    std::ifstream file(path);
    if (!file) {
        throw BadInput("cannot open " + path);
    }
    try {
        return dbc::readDatabase(
            file, path, [](const std::string& signal) { return lookUpCode(NameKind::Received, signal).has_value(); });
    } catch (const dbc::SyntaxError& error) {
        throw BadInput(error.what());
    }
}

std::string leftOutText(const dbc::Database& database) {
    const std::size_t count = database.leftOut.size();
    return count == 0 ? ""
                      : database.leftOut[0] + "; this does not matter to the schema's signals" +
                            (count == 1 ? "" : " (" + std::to_string(count - 1) + " more likewise)");
}

void addNotes(SignalNotes& notes, const dbc::Database& database) {
    for (const dbc::Message& message : database.messages) {
        for (const dbc::Signal& signal : message.signals) {
            if (const std::optional<std::uint32_t> code = lookUpCode(NameKind::Received, signal.name)) {
                notes.add(*code, noteOf(signal));
            }
        }
    }
}

}  // namespace qvn::tools
