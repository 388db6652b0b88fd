#include "vehiclectl/WatchScreen.h"

#define NCURSES_NOMACROS
#include <curses.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/signalfd.h>
#include <term.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "desk/MonotonicTime.h"

namespace qvn::tools {

using namespace platform::vehicle;

namespace {

constexpr long kHighlight = 1'000'000'000;  // ns that a changed value stands out
constexpr int kHeadLines = 2;
constexpr int kFootLines = 1;

enum Color : short { kRed = 1, kYellow };

/// The signals by which a terminal tells of Ctrl-Z and of a new size, as a descriptor.
int terminalSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTSTP);
    sigaddset(&signals, SIGWINCH);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
}

void drawAs(attr_t attributes) {
    attrset(static_cast<int>(attributes));
}

/// The text in exactly so many columns.
std::string fitted(const std::string& text, int width) {
    std::string result = text;
    result.resize(static_cast<std::size_t>(std::max(width, 0)), ' ');
    return result;
}

/// A name that is too long loses its beginning: the end tells it from its neighbours.
std::string fittedName(const std::string& name, int width) {
    const auto room = static_cast<std::size_t>(std::max(width, 2));
    return fitted(name.size() <= room ? name : ".." + name.substr(name.size() - room + 2), width);
}

std::string alignedRight(const std::string& text, int width) {
    const auto room = static_cast<std::size_t>(std::max(width, 0));
    return text.size() >= room ? text.substr(0, room) : std::string(room - text.size(), ' ') + text;
}

std::string rateText(double rate) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f/s", rate);
    return rate > 0.0 ? text : "";
}

std::string serviceText(const ServiceState& service, long now) {
    if (service.presence != ServicePresence::Gone) {
        return service.presence == ServicePresence::There ? "CAN service: up" : "CAN service: not there";
    }
    char text[48];
    std::snprintf(text, sizeof text, "CAN service: gone %.1f s",
                  static_cast<double>(now - service.since) / kNanosecondsPerSecond);
    return text;
}

const char* sortText(WatchView::Sort sort) {
    switch (sort) {
        case WatchView::Sort::Change:
            return "change";
        case WatchView::Sort::Name:
            return "name";
        case WatchView::Sort::Age:
            return "age";
    }
    return "";
}

}  // namespace

/// ncurses' state of the terminal.
struct WatchScreen::Terminal {
    Terminal() : signals(terminalSignals(), "signalfd"), screen(newterm(nullptr, stdout, stdin)) {
        if (screen == nullptr) {
            throw std::runtime_error(
                "cannot draw on this terminal; set TERM to its kind, or to 'dumb' for plain lines");
        }
        cbreak();
        noecho();
        keypad(stdscr, TRUE);
        nodelay(stdscr, TRUE);
        set_escdelay(50);
        curs_set(0);
        const char* const noColor = std::getenv("NO_COLOR");
        if ((noColor == nullptr || *noColor == '\0') && has_colors()) {
            start_color();
            use_default_colors();
            init_pair(kRed, COLOR_RED, -1);
            init_pair(kYellow, COLOR_YELLOW, -1);
            colors = true;
        }
    }
    ~Terminal() {
        endwin();
        delscreen(screen);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    attr_t color(Color wanted) const { return colors ? static_cast<attr_t>(COLOR_PAIR(wanted)) : A_NORMAL; }

    FileDescriptor signals;
    SCREEN* screen;
    bool colors = false;
};

/// How wide the columns are; those that do not fit are left out, that with the least to say first.
struct WatchScreen::Layout {
    explicit Layout(int width)
        : value(width >= 60 ? 16 : 12),
          status(width >= 64 ? 10 : 0),
          rate(width >= 78 ? 8 : 0),
          age(width >= 50 ? 9 : 0),
          name(std::max(width - 2 - value - status - rate - age, 4)) {}

    int value, status, rate, age, name;
};

bool WatchScreen::possible() {
    int error = 0;
    const char* const term = std::getenv("TERM");
    if (isatty(STDOUT_FILENO) == 0 || term == nullptr || std::strcmp(term, "dumb") == 0 ||
        setupterm(nullptr, STDOUT_FILENO, &error) != OK) {
        return false;
    }
    const bool movesCursor = tigetstr("cup") != nullptr;
    del_curterm(cur_term);
    return movesCursor;
}

WatchScreen::WatchScreen(const PropertyTable& table, std::vector<const PropertyInfo*> properties)
    : mView(table, std::move(properties)), mTerminal(std::make_unique<Terminal>()) {}

WatchScreen::~WatchScreen() = default;

std::array<int, 2> WatchScreen::fds() const {
    return {mTerminal->signals.get(), isatty(STDIN_FILENO) != 0 ? STDIN_FILENO : -1};
}

void WatchScreen::handleInput() {
    handleSignals();
    for (int key = getch(); key != ERR; key = getch()) {
        mKeys.take(key, std::max(LINES - kHeadLines - kFootLines, 1));
    }
}

void WatchScreen::handleSignals() {
    signalfd_siginfo signal{};
    while (read(mTerminal->signals.get(), &signal, sizeof signal) == sizeof signal) {
        if (signal.ssi_signo == SIGTSTP) {
            endwin();
            raise(SIGSTOP);
        }
        // Its size may be another one after a rest, too.
        winsize size{};
        if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_row > 0 && size.ws_col > 0) {
            resizeterm(size.ws_row, size.ws_col);
        }
        clearok(stdscr, TRUE);
    }
}

void WatchScreen::draw(const ServiceState& service) {
    pollfd output{STDOUT_FILENO, POLLOUT, 0};
    if (poll(&output, 1, 0) <= 0) {
        return;
    }
    mView.refresh(monotonicNow());
    erase();
    const Layout layout(COLS);
    drawHead(layout, service);
    const int height = std::max(LINES - kHeadLines - kFootLines, 0);
    const std::size_t top = mView.top(static_cast<std::size_t>(height));
    for (int line = 0; line < height && top + static_cast<std::size_t>(line) < mView.rows().size(); ++line) {
        drawRow(kHeadLines + line, layout, mView.rows()[top + static_cast<std::size_t>(line)]);
    }
    drawFoot();
    refresh();
}

void WatchScreen::drawHead(const Layout& layout, const ServiceState& service) {
    const std::string shown = std::to_string(mView.rows().size()) + " of " + std::to_string(mView.total());
    const std::string right = (mView.frozen() ? "frozen  " : "") + shown;
    const std::string left = serviceText(service, mView.time());
    drawAs(A_REVERSE | (service.presence == ServicePresence::There ? attr_t{A_NORMAL} : mTerminal->color(kRed)));
    mvaddstr(0, 0, (fitted(left, COLS - static_cast<int>(right.size()) - 1) + " " + right).c_str());
    drawAs(A_DIM);
    mvaddstr(1, 0,
             ("  " + fitted("PROPERTY", layout.name) + fitted("VALUE", layout.value) + fitted("STATUS", layout.status) +
              alignedRight("RATE", layout.rate) + alignedRight("AGE", layout.age))
                 .c_str());
}

void WatchScreen::drawRow(int line, const Layout& layout, const PropertyRow& row) {
    const Reception reception = row.state.reception;
    const bool known = reception != Reception::NeverReceived;
    const bool stale = reception == Reception::ServiceAway;
    const bool timedOut = reception == Reception::TimedOut;
    const attr_t plain = stale      ? mTerminal->color(kYellow) | A_DIM
                         : timedOut ? mTerminal->color(kRed)
                         : known    ? attr_t{A_NORMAL}
                                    : attr_t{A_DIM};
    const bool changed = row.changedAt != 0 && mView.time() - row.changedAt < kHighlight;
    drawAs(plain);
    mvaddstr(line, 0, stale ? "~ " : timedOut ? "! " : "  ");
    addstr((fittedName(row.info->name, layout.name - 1) + " ").c_str());
    drawAs(changed ? plain | A_STANDOUT : plain);
    const std::string value = valueText(*row.info, row.state);
    const auto room = std::min(static_cast<int>(value.size()), layout.value - 1);
    addstr(fitted(value, room).c_str());
    drawAs(plain);
    addstr(std::string(static_cast<std::size_t>(layout.value - room), ' ').c_str());
    addstr(fitted(known ? statusText(row.state) : "-", layout.status).c_str());
    addstr(alignedRight(rateText(row.arrivals.rate(mView.time())), layout.rate).c_str());
    addstr(alignedRight(ageText(row, mView.time()), layout.age).c_str());
}

void WatchScreen::drawFoot() {
    drawAs(mKeys.editing() ? attr_t{A_NORMAL} : attr_t{A_DIM});
    std::string text = std::string("q quit  / filter  s sort: ") + sortText(mView.sort()) + "  f freeze  arrows scroll";
    if (mKeys.editing()) {
        text = "filter: " + mView.filter() + "_   (Enter keeps it, Escape drops it)";
    } else if (!mView.filter().empty()) {
        text = "filter: " + mView.filter() + "   Escape drops it  " + text;
    }
    // The last column of the last line would scroll the terminal.
    mvaddstr(LINES - 1, 0, text.substr(0, static_cast<std::size_t>(std::max(COLS - 1, 0))).c_str());
}

}  // namespace qvn::tools
