#pragma once

#include <functional>
#include <string>
#include <vector>

namespace qvn::tools {

/// A line on the terminal that a person edits, with completion, and with a history that is kept between runs in
/// $XDG_STATE_HOME (or ~/.local/state). A process has one, since the editing library does.
class Prompt {
public:
    /// Takes a line; null at the end of the input (Ctrl-D).
    using Taker = std::function<void(const std::string* line)>;

    /// @param words are completed at any place of a line
    Prompt(std::vector<std::string> words, Taker take);
    ~Prompt();
    Prompt(const Prompt&) = delete;
    Prompt& operator=(const Prompt&) = delete;

    /// Reads what was typed; call it when standard input is readable.
    void read();

    /// Shows whole lines above the line that is being edited. A terminal that takes nothing (Ctrl-S) misses them.
    void printAbove(const std::string& text);

private:
    std::string historyFile_;
};

}  // namespace qvn::tools
