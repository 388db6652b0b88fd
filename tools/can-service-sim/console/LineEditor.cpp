#include "can-service-sim/console/LineEditor.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <filesystem>
#include <iterator>
#include <system_error>
#include <utility>

namespace qvn::tools {
namespace {

constexpr int kMostHistory = 1000;
// The editing library is at its best with less than this; and no event is that long.
constexpr std::size_t kLongestEdited = 1000;
constexpr std::size_t kMostListed = 60;
constexpr int kLookForForeground = 250;  // ms, in the background, for the foreground
constexpr char kPrompt[] = "> ";

int editingSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGTSTP, SIGCONT, SIGWINCH}) {
        sigaddset(&signals, number);
    }
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    // In the background reading and writing then fail or go on, instead of stopping the whole job.
    std::signal(SIGTTIN, SIG_IGN);
    std::signal(SIGTTOU, SIG_IGN);
    return signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
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

LineEditor& editorOf(EditLine* line) {
    void* self = nullptr;
    el_get(line, EL_CLIENTDATA, &self);
    return *static_cast<LineEditor*>(self);
}

std::size_t lengthOf(const LineInfo& line) {
    return static_cast<std::size_t>(line.lastchar - line.buffer);
}

}  // namespace

LineEditor::LineEditor(const Pipes& pipes, std::function<Completion(const std::string&)> complete, Suspend suspend)
    : mTexts{pipes.texts, {}},
      mErrors{pipes.errors, {}},
      mLines(pipes.lines),
      mComplete(std::move(complete)),
      mSuspend(std::move(suspend)),
      mSignals(editingSignals()),
      mEditor((std::setlocale(LC_CTYPE, "C.UTF-8"), el_init("can-service-sim", stdin, stdout, stderr))),
      mHistory(history_init()),
      mHistoryFile(historyFile()) {
    HistEvent event;
    history(mHistory, &event, H_SETSIZE, kMostHistory);
    history(mHistory, &event, H_SETUNIQUE, 1);
    history(mHistory, &event, H_LOAD, mHistoryFile.c_str());
    el_set(mEditor, EL_CLIENTDATA, this);
    el_set(
        mEditor, EL_PROMPT, +[](EditLine*) -> char* { return const_cast<char*>(kPrompt); });
    el_set(mEditor, EL_SIGNAL, 0);
    el_set(mEditor, EL_HIST, &::history, mHistory);
    el_set(mEditor, EL_GETCFN, &readKey);
    bindKeys();
}

LineEditor::~LineEditor() {
    if (isForeground()) {
        el_set(mEditor, EL_PREP_TERM, 0);
    }
    // Not el_end(): it would wait for a terminal that takes nothing.
}

void LineEditor::bindKeys() {
    constexpr const char* kKeys[][2] = {{"^I", "complete"},
                                        {"^R", "em-inc-search-prev"},
                                        {"\\e[1~", "ed-move-to-beg"},
                                        {"\\e[H", "ed-move-to-beg"},
                                        {"\\e[4~", "ed-move-to-end"},
                                        {"\\e[F", "ed-move-to-end"},
                                        {"\\e[3~", "ed-delete-next-char"},
                                        {"\\e[5~", "ed-prev-history"},
                                        {"\\e[6~", "ed-next-history"},
                                        {"\\e[1;5C", "em-next-word"},
                                        {"\\e[1;5D", "ed-prev-word"}};
    el_set(mEditor, EL_EDITOR, "emacs");
    el_set(mEditor, EL_ADDFN, "complete", "Completes a word", &completeKey);
    for (const auto& [key, function] : kKeys) {
        el_set(mEditor, EL_BIND, key, function, nullptr);
    }
    el_source(mEditor, nullptr);
}

void LineEditor::run() {
    while (!mTerminalGone && mTexts.fd >= 0) {
        if (mQuits || !isForeground()) {
            awaitInput();
            continue;
        }
        mForeground = true;
        mEditing = true;
        el_set(mEditor, EL_PREP_TERM, 1);  // the library would show the prompt first
        int count = 0;
        const char* const line = el_gets(mEditor, &count);
        mEditing = false;
        if (line && mTexts.fd >= 0) {
            el_set(mEditor, EL_PREP_TERM, 1);  // keys that come meanwhile are not for the terminal to show
            enter(std::string(line, static_cast<std::size_t>(count)));
        } else if (isForeground()) {
            std::fputs(eraseLine().c_str(), stdout);
            std::fflush(stdout);
            mQuits = true;
        }
        if (mQuits && mTexts.fd >= 0 && !mTerminalGone) {
            enter("quit");
        }
    }
    showLastErrors();
}

void LineEditor::showLastErrors() {
    for (pollfd errors{mErrors.fd, POLLIN, 0}; mErrors.fd >= 0 && poll(&errors, 1, 0) > 0;) {
        takeText(mErrors);
    }
}

void LineEditor::enter(std::string line) {
    line.erase(std::min(line.find_last_not_of("\r\n") + 1, line.size()));
    if (!line.empty() && line != "quit") {
        HistEvent event;
        history(mHistory, &event, H_ENTER, line.c_str());
        history(mHistory, &event, H_SAVE, mHistoryFile.c_str());
    }
    line += '\n';
    for (std::size_t done = 0; done < line.size();) {
        const ssize_t count = ::write(mLines, line.data() + done, line.size() - done);
        if (count < 0 && errno != EINTR) {
            return;
        }
        done += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    }
}

/// The library asks for each key here, whatever it is in the middle of.
int LineEditor::readKey(EditLine* editor, wchar_t* key) {
    return editorOf(editor).nextKey(key);
}

int LineEditor::nextKey(wchar_t* key) {
    for (;;) {
        while (!mTyped.empty()) {
            if (refuses(mTyped.front())) {
                mTyped.erase(0, 1);
                continue;
            }
            std::mbstate_t state{};
            const std::size_t size = std::mbrtowc(key, mTyped.data(), mTyped.size(), &state);
            if (size == static_cast<std::size_t>(-2)) {
                break;  // the rest of the character is still to come
            }
            const bool wrong = size == static_cast<std::size_t>(-1);
            if (wrong || size == 0) {
                *key = wrong ? L'?' : L'\0';
            }
            mTyped.erase(0, wrong || size == 0 ? 1 : size);
            mCompletedBefore = mCompletedBefore && *key == L'\t';
            return 1;
        }
        if (!awaitInput()) {
            return 0;
        }
    }
}

/// Takes the place of a key that would make the line too long, and of all that follow up to its end.
bool LineEditor::refuses(char key) {
    const bool ends = key == '\r' || key == '\n';
    const std::size_t length = lengthOf(*el_line(mEditor));
    if (mRefused == 0 && (ends || length < kLongestEdited || static_cast<unsigned char>(key) < ' ' || key == '\x7F')) {
        return false;
    }
    ++mRefused;
    if (ends) {
        std::fputs(eraseLine().c_str(), stdout);
        std::printf(
            "a line of %zu characters is too long for the prompt; expected %zu at most, --play FILE takes any\n",
            length + std::exchange(mRefused, 0) - 1, kLongestEdited);
        el_cursor(mEditor, static_cast<int>(length));
        el_deletestr(mEditor, static_cast<int>(length));
        el_set(mEditor, EL_REFRESH);
    }
    return true;
}

/// Waits for a key, and shows what comes meanwhile. False when there is nothing to edit any more.
bool LineEditor::awaitInput() {
    const bool foreground = isForeground();
    if (foreground && !mForeground && mEditing) {
        el_set(mEditor, EL_PREP_TERM, 0);
        el_set(mEditor, EL_PREP_TERM, 1);
        el_set(mEditor, EL_REFRESH);
    }
    mForeground = foreground;
    pollfd fds[] = {{mSignals, POLLIN, 0},
                    {mTexts.fd, POLLIN, 0},
                    {mErrors.fd, POLLIN, 0},
                    {foreground && !mQuits ? STDIN_FILENO : -1, POLLIN, 0}};
    poll(fds, std::size(fds), foreground ? -1 : kLookForForeground);
    if (fds[0].revents != 0) {
        takeSignals();
    }
    if (fds[2].revents != 0) {
        takeText(mErrors);
    }
    if (fds[1].revents != 0) {
        takeText(mTexts);
    }
    if (fds[3].revents != 0 && isForeground()) {
        char buffer[4096];
        const ssize_t count = ::read(STDIN_FILENO, buffer, sizeof buffer);
        mTerminalGone = count == 0 || (count < 0 && errno != EINTR && errno != EAGAIN);
        mTyped.append(buffer, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
    if (mTexts.fd < 0 && !isForeground()) {
        // Killed: a shell has the terminal again, and the library would set it once more on its way out.
        showLastErrors();
        _exit(0);
    }
    return mTexts.fd >= 0 && !mTerminalGone;
}

void LineEditor::takeSignals() {
    signalfd_siginfo info;
    while (::read(mSignals, &info, sizeof info) == static_cast<ssize_t>(sizeof info)) {
        if (info.ssi_signo == SIGTSTP) {
            suspend();
        } else if (info.ssi_signo == SIGCONT) {
            mForeground = false;  // whoever had the terminal has left it as it likes
        } else {
            el_resize(mEditor);
        }
    }
}

void LineEditor::suspend() {
    el_set(mEditor, EL_PREP_TERM, 0);
    std::fputs("\n", stdout);
    std::fflush(stdout);
    mSuspend();
    raise(SIGSTOP);
    mForeground = false;
}

bool LineEditor::isForeground() {
    return tcgetpgrp(STDIN_FILENO) == getpgrp();
}

void LineEditor::takeText(Source& source) {
    char buffer[65536];
    const ssize_t count = ::read(source.fd, buffer, sizeof buffer);
    if (count < 0 && errno == EINTR) {
        return;
    }
    source.cut.append(buffer, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    const std::size_t whole = count > 0 ? source.cut.rfind('\n') + 1 : source.cut.size();
    if (whole > 0) {
        showAbove(source.cut.substr(0, whole));
        source.cut.erase(0, whole);
    }
    if (count <= 0) {
        close(std::exchange(source.fd, -1));
    }
}

void LineEditor::showAbove(const std::string& text) {
    const bool above = mEditing && mForeground;
    std::fputs(((above ? eraseLine() : "") + text).c_str(), stdout);
    std::fflush(stdout);
    if (above) {
        el_set(mEditor, EL_REFRESH);
    }
}

/// Goes to where the prompt begins, which may be some rows above the cursor, and erases from there.
std::string LineEditor::eraseLine() const {
    const LineInfo& line = *el_line(mEditor);
    const auto begins = [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; };  // a character
    const auto place = sizeof kPrompt - 1 + static_cast<std::size_t>(std::count_if(line.buffer, line.cursor, begins));
    const std::size_t rows = place / static_cast<std::size_t>(columns());
    return "\r" + (rows > 0 ? "\033[" + std::to_string(rows) + "A" : "") + "\033[J";
}

int LineEditor::columns() const {
    winsize size{};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

unsigned char LineEditor::completeKey(EditLine* editor, int) {
    return editorOf(editor).complete();
}

/// A Tab adds what is certain; a second one shows what is possible.
unsigned char LineEditor::complete() {
    const LineInfo& info = *el_line(mEditor);
    const std::string line(info.buffer, info.cursor);
    const Completion completion = mComplete(line);
    const std::string common = completion.common(line);
    const bool again = std::exchange(mCompletedBefore, true);
    if (!common.empty()) {
        el_insertstr(mEditor, common.c_str());
        return CC_REFRESH;
    }
    if (completion.words.size() < 2 || !again) {
        return CC_REFRESH_BEEP;
    }
    showAbove(listed(completion));
    return CC_NORM;
}

std::string LineEditor::listed(const Completion& completion) const {
    std::size_t width = 0;
    for (const std::string& word : completion.words) {
        width = std::max(width, word.size() + 2);
    }
    const std::size_t perRow = std::max<std::size_t>(1, static_cast<std::size_t>(columns()) / width);
    const std::size_t count = std::min(completion.words.size(), kMostListed);
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        const std::string& word = completion.words[i];
        const bool last = (i + 1) % perRow == 0 || i + 1 == count;
        text += word + (last ? "\n" : std::string(width - word.size(), ' '));
    }
    if (count < completion.words.size()) {
        text += "and " + std::to_string(completion.words.size() - count) + " more; type more of the name\n";
    }
    return text;
}

}  // namespace qvn::tools
