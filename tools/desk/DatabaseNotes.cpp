#include "desk/DatabaseNotes.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <fstream>
#include <optional>

#include "dbc/Reader.h"
#include "desk/BadInput.h"
#include "desk/SignalNames.h"

namespace qvn::tools {
namespace {

bool isPlain(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

/// One word that no number begins like: "Not available" becomes Not_available, "2nd" _2nd.
std::string asWord(std::string name) {
    const auto isOther = [](unsigned char c) { return std::isalnum(c) == 0 && c != '-' && c != '.' && c != '/'; };
    std::replace_if(name.begin(), name.end(), isOther, '_');
    return name.empty() || std::isalpha(static_cast<unsigned char>(name[0])) != 0 ? name : "_" + name;
}

SignalNote noteOf(const dbc::Signal& signal) {
    SignalNote note;
    note.unit = isPlain(signal.unit) ? signal.unit : "";
    if (signal.minimum < signal.maximum) {
        note.range = {signal.minimum, signal.maximum};
    }
    for (const auto& [raw, name] : signal.values) {
        const double value = static_cast<double>(raw) * signal.factor + signal.offset;
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
        return dbc::readDatabase(file, path);
    } catch (const dbc::SyntaxError& error) {
        throw BadInput(error.what());
    }
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
