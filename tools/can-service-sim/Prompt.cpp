#include "can-service-sim/Prompt.h"

#include <editline/readline.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

namespace qvn::tools {
namespace {

constexpr int kMostHistory = 1000;

// The editing library calls plain functions.
std::vector<std::string> words;
Prompt::Taker taker;

constexpr char kPrompt[] = "> ";
constexpr char kEraseLine[] = "\r\033[K";

/// What stands in the terminal's last line.
enum class Line {
    Empty,   ///< a prompt of our own; the library shows its with the first key
    Edited,  ///< by the library
    Taken    ///< what was entered is being carried out
} line = Line::Empty;

void showEmptyLine() {
    line = Line::Empty;
    std::fputs(kPrompt, stdout);
    std::fflush(stdout);
}

char* nextMatch(const char* begin, int state) {
    static std::size_t next = 0;
    next = state == 0 ? 0 : next;
    while (next < words.size()) {
        const std::string& word = words[next++];
        if (word.compare(0, std::strlen(begin), begin) == 0) {
            return strdup(word.c_str());
        }
    }
    return nullptr;
}

char** complete(const char* begin, int, int) {
    rl_attempted_completion_over = 1;  // no names of files
    return rl_completion_matches(begin, &nextMatch);
}

void takeLine(char* entered) {
    line = Line::Taken;
    if (entered != nullptr && *entered != '\0') {
        add_history(entered);
    }
    const std::string text = entered ? entered : "";
    taker(entered ? &text : nullptr);
    std::free(entered);
}

std::string historyFile() {
    const char* const state = std::getenv("XDG_STATE_HOME");
    const char* const home = std::getenv("HOME");
    if ((!state || !*state) && (!home || !*home)) {
        return {};
    }
    const std::filesystem::path folder =
        state && *state ? std::filesystem::path(state) : std::filesystem::path(home) / ".local" / "state";
    std::error_code ignored;
    std::filesystem::create_directories(folder, ignored);
    return (folder / "can-service-sim-history").string();
}

}  // namespace

Prompt::Prompt(std::vector<std::string> completions, Taker take) : historyFile_(historyFile()) {
    words = std::move(completions);
    taker = std::move(take);
    rl_readline_name = "can-service-sim";
    rl_catch_signals = 0;
    using_history();
    stifle_history(kMostHistory);
    read_history(historyFile_.c_str());
    rl_attempted_completion_function = &complete;
    rl_completion_append_character = '\0';
    rl_callback_handler_install(kPrompt, &takeLine);
    line = Line::Edited;
    rl_forced_update_display();
}

Prompt::~Prompt() {
    rl_callback_handler_remove();
    write_history(historyFile_.c_str());
    std::fputs("\n", stdout);
    std::fflush(stdout);
}

void Prompt::read() {
    if (line == Line::Empty) {
        std::fputs(kEraseLine, stdout);
        std::fflush(stdout);
        line = Line::Edited;
    }
    rl_callback_read_char();
    if (line == Line::Taken) {
        showEmptyLine();
    }
    // After a line the library leaves the terminal as others want it, which is line by line.
    rl_prep_terminal(1);
}

void Prompt::printAbove(const std::string& text) {
    pollfd terminal{STDOUT_FILENO, POLLOUT, 0};
    if (poll(&terminal, 1, 0) <= 0) {
        return;
    }
    std::fputs((kEraseLine + text).c_str(), stdout);
    std::fflush(stdout);
    if (line == Line::Empty) {
        showEmptyLine();
    } else if (line == Line::Edited) {
        rl_forced_update_display();
    }
}

}  // namespace qvn::tools
