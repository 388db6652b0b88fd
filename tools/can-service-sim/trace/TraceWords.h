#pragma once

#include <optional>
#include <string_view>

namespace qvn::tools {

/// What may follow a value: `every SECONDS` and `for SECONDS`.
struct Repetition {
    std::optional<double> period;
    std::optional<double> duration;
};

/// Takes the words of a trace's line one after the other.
class TraceWords {
public:
    explicit TraceWords(std::string_view rest) : mRest(rest) {}

    /// The next word; empty at the end of the line and where a remark begins. A remark begins at a '#', and after two
    /// blanks unless one of the words follows that lead a value on: every, for, over, seed.
    std::string_view peek() const;

    /// Takes the next word if it is this one.
    bool take(std::string_view keyword);

    /// The next word whatever stands before it.
    std::string_view next();

    /// The next word as seconds, at least a millisecond; `what` names them in the error.
    /// @throws BadInput
    double nextSeconds(std::string_view what);
    /// What follows of these, in either order, each once.
    /// @throws BadInput
    Repetition repetition();
    /// Seconds behind a keyword that must stand there.
    double expectSeconds(std::string_view keyword, std::string_view what);

private:
    std::string_view wordAt(std::size_t begin) const;

    std::string_view mRest;
};

/// Seconds of a trace, from `least` to a million.
/// @throws BadInput
double readSeconds(std::string_view text, double least, std::string_view what);

}  // namespace qvn::tools
