#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace qvn::tools {

/// What may stand at the end of a line.
struct Completion {
    std::size_t begin = 0;           ///< of the part of the line for which the words stand
    std::vector<std::string> words;  ///< all that begin with that part

    /// What all words have in common behind the part that is there already.
    std::string common(const std::string& line) const;
};

/// Completes a line of the prompt, up to the cursor: names of commands, signals and messages, values behind '=', faults
/// behind '!'.
Completion completeLine(const std::string& line, const std::vector<std::string>& commands);

}  // namespace qvn::tools
