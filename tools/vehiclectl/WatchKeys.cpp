#include "vehiclectl/WatchKeys.h"

#define NCURSES_NOMACROS
#include <curses.h>

#include <string>

namespace qvn::tools {
namespace {

constexpr int kEscape = 27;

WatchView::Sort nextAfter(WatchView::Sort sort) {
    switch (sort) {
        case WatchView::Sort::Change:
            return WatchView::Sort::Name;
        case WatchView::Sort::Name:
            return WatchView::Sort::Age;
        case WatchView::Sort::Age:
            break;
    }
    return WatchView::Sort::Change;
}

}  // namespace

void WatchKeys::take(int key, long page) {
    editing_ ? editFilter(key) : command(key, page);
}

void WatchKeys::command(int key, long page) {
    switch (key) {
        case 'q':
            ended_ = true;
            break;
        case '/':
            editing_ = true;
            break;
        case 's':
            view_.sortBy(nextAfter(view_.sort()));
            break;
        case 'f':
        case ' ':
            view_.freeze(!view_.frozen());
            break;
        case kEscape:
            view_.filter("");
            break;
        case KEY_UP:
        case 'k':
            view_.scroll(-1);
            break;
        case KEY_DOWN:
        case 'j':
            view_.scroll(1);
            break;
        case KEY_PPAGE:
            view_.scroll(-page);
            break;
        case KEY_NPAGE:
            view_.scroll(page);
            break;
        case KEY_HOME:
            view_.scroll(-static_cast<long>(view_.total()));
            break;
        case KEY_END:
            view_.scroll(static_cast<long>(view_.total()));
            break;
        default:
            break;
    }
}

void WatchKeys::editFilter(int key) {
    std::string text = view_.filter();
    if (key == kEscape) {
        text.clear();
    } else if ((key == KEY_BACKSPACE || key == '\b' || key == 0x7F) && !text.empty()) {
        text.pop_back();
    } else if (key > ' ' && key < 0x7F) {
        text += static_cast<char>(key);
    }
    editing_ = key != kEscape && key != '\r' && key != '\n' && key != KEY_ENTER;
    view_.filter(text);
}

}  // namespace qvn::tools
