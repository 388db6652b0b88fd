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
    mEditing ? editFilter(key) : command(key, page);
}

void WatchKeys::command(int key, long page) {
    switch (key) {
        case 'q':
            mEnded = true;
            break;
        case '/':
            mEditing = true;
            break;
        case 's':
            mView.sortBy(nextAfter(mView.sort()));
            break;
        case 'f':
        case ' ':
            mView.freeze(!mView.frozen());
            break;
        case kEscape:
            mView.filter("");
            break;
        case KEY_UP:
        case 'k':
            mView.scroll(-1);
            break;
        case KEY_DOWN:
        case 'j':
            mView.scroll(1);
            break;
        case KEY_PPAGE:
            mView.scroll(-page);
            break;
        case KEY_NPAGE:
            mView.scroll(page);
            break;
        case KEY_HOME:
            mView.scroll(-static_cast<long>(mView.total()));
            break;
        case KEY_END:
            mView.scroll(static_cast<long>(mView.total()));
            break;
        default:
            break;
    }
}

void WatchKeys::editFilter(int key) {
    std::string text = mView.filter();
    if (key == kEscape) {
        text.clear();
    } else if ((key == KEY_BACKSPACE || key == '\b' || key == 0x7F) && !text.empty()) {
        text.pop_back();
    } else if (key > ' ' && key < 0x7F) {
        text += static_cast<char>(key);
    }
    mEditing = key != kEscape && key != '\r' && key != '\n' && key != KEY_ENTER;
    mView.filter(text);
}

}  // namespace qvn::tools
