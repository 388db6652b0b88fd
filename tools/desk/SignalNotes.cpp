#include "desk/SignalNotes.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <vector>

#include "desk/BadInput.h"
#include "desk/BuiltInNotes.h"
#include "desk/Json.h"
#include "desk/Number.h"
#include "desk/SignalNames.h"
#include "desk/Suggestions.h"
#include "desk/Text.h"
#include "tables/DecodingRules.h"
#include "tables/SetCatalogue.h"

namespace qvn::tools {
namespace {

std::string textOf(const Json& value, const std::string& what) {
    if (!value.is_string()) {
        throw BadInput(what + " is " + jsonText(value) + "; expected a text");
    }
    return value.get<std::string>();
}

std::int32_t numberOf(const std::string& text) {
    std::int32_t number = 0;
    std::size_t used = 0;
    try {
        number = std::stoi(text, &used);
    } catch (const std::exception&) {
        used = 0;
    }
    if (used == 0 || used != text.size()) {
        throw BadInput(tools::quoted(text) +
                       " is not a whole number; expected one, in quotes, with the name of the value");
    }
    return number;
}

/// A name stands in traces and on command lines, where it must be one word and no number.
std::string valueNameOf(const Json& value) {
    const std::string name = textOf(value, "the name of a value");
    const bool word = !name.empty() && std::none_of(name.begin(), name.end(), [](unsigned char c) {
        return c <= ' ' || c == 0x7F || std::strchr("#=!,\"", c) != nullptr;
    });
    if (!word || std::strchr("0123456789+-.", name.front()) != nullptr) {
        throw BadInput(tools::quoted(name) +
                       " cannot name a value; expected one word that begins with a letter, without " +
                       "blanks and any of # = ! , \"");
    }
    return name;
}

SignalNote::Range rangeOf(const Json& value) {
    const bool pair = value.is_array() && value.size() == 2 && value[0].is_number() && value[1].is_number();
    if (!pair || !(value[0].get<double>() < value[1].get<double>())) {
        throw BadInput("the range is " + jsonText(value) + "; expected [LOW, HIGH], two numbers");
    }
    return {value[0].get<double>(), value[1].get<double>()};
}

SignalNote readNote(const Json& object) {
    if (!object.is_object()) {
        throw BadInput(jsonText(object) +
                       R"( is not a note; expected {"description": ..., "unit": ..., "values": {...}})");
    }
    SignalNote note;
    for (const auto& [key, value] : object.items()) {
        if (key == "description") {
            note.description = textOf(value, "the description");
        } else if (key == "unit") {
            note.unit = textOf(value, "the unit");
        } else if (key == "values" && value.is_object()) {
            for (const auto& [number, name] : value.items()) {
                note.values[numberOf(number)] = valueNameOf(name);
            }
        } else if (key == "range") {
            note.range = rangeOf(value);
        } else {
            throw BadInput(tools::quoted(key) +
                           R"( is not known here; expected "description", "unit", "values": {...} or "range": [...])");
        }
    }
    return note;
}

/// The code ids of the received and the settable signal of this name, of which there is one at least.
std::vector<std::uint32_t> codesNamed(const std::string& name) {
    std::vector<std::uint32_t> codes;
    for (const NameKind kind : {NameKind::Received, NameKind::Settable}) {
        if (const std::optional<std::uint32_t> code = lookUpCode(kind, name)) {
            codes.push_back(*code);
        }
    }
    if (codes.empty()) {
        std::vector<std::string> all = knownNames(NameKind::Received);
        const std::vector<std::string> settable = knownNames(NameKind::Settable);
        all.insert(all.end(), settable.begin(), settable.end());
        throw BadInput("unknown signal " + tools::quoted(name) + suggestionText(withoutPrefix(name), all));
    }
    return codes;
}

Json parse(std::istream& input, const std::string& name) {
    const std::string text{std::istreambuf_iterator<char>(input), {}};
    Json all;
    try {
        all = parseJson(text);
    } catch (const BadInput& error) {
        throw BadInput(name + ": is no JSON: " + error.what());
    }
    if (!all.is_object()) {
        throw BadInput(name + R"(: expected {"SIGNAL": {"description": ..., "unit": ..., "values": {...}}, ...})");
    }
    return all;
}

}  // namespace

SignalNotes& SignalNotes::instance() {
    static SignalNotes notes;
    return notes;
}

SignalNotes::SignalNotes() {
    for (const tables::DecodingRow& row : tables::kDecodingRules) {
        mNotes[row.code].unit = row.unit;
    }
    std::istringstream builtIn(kBuiltInNotes);
    add(builtIn, "signals.json");
}

void SignalNotes::addFile(const std::string& path) {
    std::ifstream file(path);
    if (!file) {
        throw BadInput("cannot open " + path);
    }
    add(file, path);
}

void SignalNotes::add(std::istream& input, const std::string& name) {
    const Json all = parse(input, name);
    SignalNotes together = *this;
    for (const auto& [signal, object] : all.items()) {
        try {
            const SignalNote note = readNote(object);
            for (const std::uint32_t code : codesNamed(signal)) {
                together.add(code, note);
            }
        } catch (const BadInput& error) {
            throw BadInput(name + ": " + signal + ": " + error.what());
        }
    }
    *this = std::move(together);
}

void SignalNotes::add(std::uint32_t code, const SignalNote& note) {
    SignalNote& known = mNotes[code];
    if (!note.description.empty()) {
        known.description = note.description;
    }
    if (!note.unit.empty()) {
        known.unit = note.unit;
    }
    for (const auto& [number, name] : note.values) {
        known.values[number] = name;
    }
    if (note.range) {
        known.range = note.range;
    }
}

const SignalNote& SignalNotes::of(std::uint32_t code) const {
    static const SignalNote none;
    const auto found = mNotes.find(code);
    return found == mNotes.end() ? none : found->second;
}

std::string valueName(std::uint32_t code, double value) {
    const SignalNote& note = SignalNotes::instance().of(code);
    const auto found = value == std::floor(value) && std::fabs(value) < 1e9
                           ? note.values.find(static_cast<std::int32_t>(value))
                           : note.values.end();
    return found == note.values.end() ? std::string() : found->second;
}

std::string valueWithNote(std::uint32_t code, double value) {
    std::string text = formatNumber(value);
    const std::string& unit = SignalNotes::instance().of(code).unit;
    for (const std::string& note : {unit, valueName(code, value)}) {
        text += note.empty() ? "" : " " + note;
    }
    return text;
}

double parseValue(std::uint32_t code, std::string_view text, std::string_view what) {
    const SignalNote& note = SignalNotes::instance().of(code);
    std::string names;
    for (const auto& [number, name] : note.values) {
        if (name == text) {
            return number;
        }
        names += (names.empty() ? "" : ", ") + name;
    }
    return parseNumber(text, std::string(what) + (names.empty() ? "" : " or one of: " + names));
}

}  // namespace qvn::tools
