#pragma once

#include "vehiclectl/WatchView.h"

namespace qvn::tools {

/// What the keys of a watch do to its view.
class WatchKeys {
public:
    explicit WatchKeys(WatchView& view) : mView(view) {}

    /// @param key  a character, or one of curses' KEY_ numbers
    /// @param page how many rows are shown
    void take(int key, long page);

    /// Whether the filter is being written.
    bool editing() const { return mEditing; }
    /// Whether the user asked for the end.
    bool ended() const { return mEnded; }

private:
    void command(int key, long page);
    void editFilter(int key);

    WatchView& mView;
    bool mEditing = false;
    bool mEnded = false;
};

}  // namespace qvn::tools
