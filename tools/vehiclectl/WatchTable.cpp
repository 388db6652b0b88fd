#include "vehiclectl/WatchTable.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <utility>

namespace qvn::tools {
namespace {

constexpr char kHideCursor[] = "\033[?25l";
constexpr char kShowCursor[] = "\033[?25h";
constexpr char kClearBelow[] = "\033[J";
constexpr char kClearLineEnd[] = "\033[K";
constexpr char kDim[] = "\033[2m";
constexpr char kPlain[] = "\033[0m";

struct TerminalSize {
    std::size_t columns = 80;
    std::size_t rows = 24;
};

TerminalSize terminalSize() {
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0) {
        return {};
    }
    return {size.ws_col, size.ws_row};
}

std::string ageText(double age) {
    char text[32];
    if (age < 0.0) {
        return "";
    }
    std::snprintf(text, sizeof text, "%.1f s", age);
    return text;
}

std::string rowText(const char* name, const char* value, const char* status, const char* age) {
    char text[256];
    std::snprintf(text, sizeof text, "%-36s %-20s %-9s %9s", name, value, status, age);
    return text;
}

}  // namespace

WatchTable::WatchTable(Output& output, const PropertyStates& states, std::vector<const PropertyInfo*> properties)
    : output_(output), states_(states), properties_(std::move(properties)) {
    output_.write(kHideCursor);
}

WatchTable::~WatchTable() {
    output_.write(kShowCursor);
}

void WatchTable::draw() {
    const TerminalSize terminal = terminalSize();
    // One line is the heading, one is left for the cursor.
    const std::vector<const PropertyState*> rows = shown(std::max<std::size_t>(terminal.rows, 4) - 2);
    std::string text;
    if (drawnLines_ > 0) {
        text += "\033[" + std::to_string(drawnLines_) + "A\r";
    }
    const auto addLine = [&](const std::string& line, bool dim) {
        text += dim ? kDim : "";
        text += line.substr(0, terminal.columns);
        text += dim ? kPlain : "";
        text += kClearLineEnd;
        text += '\n';
    };
    addLine(rowText("PROPERTY", "VALUE", "STATUS", "AGE"), true);
    const long now = monotonicNow();
    for (const PropertyState* const state : rows) {
        const bool known = state->value || state->timedOut;
        addLine(rowText(state->info->name.c_str(), valueText(*state).c_str(), known ? statusText(*state) : "-",
                        ageText(ageOf(*state, now)).c_str()),
                state->timedOut || !state->value);
    }
    text += kClearBelow;
    drawnLines_ = rows.size() + 1;
    output_.write(std::move(text));
}

std::vector<const PropertyState*> WatchTable::shown(std::size_t most) const {
    std::vector<const PropertyState*> rows;
    for (const PropertyInfo* const property : properties_) {
        rows.push_back(&states_.of(*property));
    }
    if (rows.size() <= most) {
        return rows;
    }
    std::vector<long> changes;
    for (const PropertyState* const state : rows) {
        changes.push_back(state->changedAt);
    }
    std::nth_element(changes.begin(), changes.begin() + static_cast<std::ptrdiff_t>(most) - 1, changes.end(),
                     [](long a, long b) { return a > b; });
    const long oldest = changes[most - 1];
    std::vector<const PropertyState*> recent;
    for (const PropertyState* const state : rows) {
        if (state->changedAt >= oldest && recent.size() < most) {
            recent.push_back(state);
        }
    }
    return recent;
}

}  // namespace qvn::tools
