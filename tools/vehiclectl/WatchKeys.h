#pragma once

#include "vehiclectl/WatchView.h"

namespace qvn::tools {

/// What the keys of a watch do to its view.
class WatchKeys {
public:
    explicit WatchKeys(WatchView& view) : view_(view) {}

    /// @param key  a character, or one of curses' KEY_ numbers
    /// @param page how many rows are shown
    void take(int key, long page);

    /// Whether the filter is being written.
    bool editing() const { return editing_; }
    /// Whether the user asked for the end.
    bool ended() const { return ended_; }

private:
    void command(int key, long page);
    void editFilter(int key);

    WatchView& view_;
    bool editing_ = false;
    bool ended_ = false;
};

}  // namespace qvn::tools
