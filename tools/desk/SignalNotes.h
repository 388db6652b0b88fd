#pragma once

#include <cstdint>
#include <istream>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace qvn::tools {

/// What people call a signal and its values.
struct SignalNote {
    std::string description;
    std::string unit;
    std::map<std::int32_t, std::string> values;  ///< names of whole numbers

    struct Range {
        double low;
        double high;
    };
    std::optional<Range> range;  ///< in which the values usually are; physical
};

/// The notes on all signals. They come with the tools (share/signals/signals.json; units from the decoding rules), and
/// files of the user's add to them: what is said later of a signal, or of one of its values, counts.
class SignalNotes {
public:
    /// Those of this process. They are complete before anything else looks at them, and are then read by any thread.
    static SignalNotes& instance();

    /// Adds a file of the form {"SIGNAL": {"description": TEXT, "unit": TEXT, "values": {"NUMBER": NAME},
    /// "range": [LOW, HIGH]}}.
    /// @throws BadInput with file and line, or file and signal, for what is wrong; nothing of the file counts then
    void addFile(const std::string& path);
    void add(std::istream& input, const std::string& name);

    /// Adds what is known of one signal from elsewhere; an empty text changes nothing.
    void add(std::uint32_t code, const SignalNote& note);

    const SignalNote& of(std::uint32_t code) const;

private:
    SignalNotes();

    std::map<std::uint32_t, SignalNote> mNotes;
};

/// The name of a signal's value, "R"; empty where it has none.
std::string valueName(std::uint32_t code, double value);

/// The value as people read it: "2 R", "4.5 km/h", "3".
std::string valueWithNote(std::uint32_t code, double value);

/// The value that is meant by its name or as a number; `what` names it in the error.
/// @throws BadInput with the names that the signal has
double parseValue(std::uint32_t code, std::string_view text, std::string_view what);

}  // namespace qvn::tools
