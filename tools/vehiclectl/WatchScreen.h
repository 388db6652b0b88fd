#pragma once

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "desk/FileDescriptor.h"
#include "vehiclectl/PropertyTable.h"
#include "vehiclectl/WatchKeys.h"
#include "vehiclectl/WatchView.h"

namespace qvn::tools {

/// A table of properties on the whole terminal, with keys. At its end the terminal is as before, with the last picture
/// below what stood there. Made before threads are started: it takes the terminal's signals away from them.
class WatchScreen {
public:
    /// Whether standard output is a terminal on which it can draw.
    static bool possible();

    WatchScreen(const PropertyTable& table, std::vector<const PropertyInfo*> properties);
    ~WatchScreen();
    WatchScreen(const WatchScreen&) = delete;
    WatchScreen& operator=(const WatchScreen&) = delete;

    /// Readable when a key was pressed, or the terminal's size changed, or the user pressed Ctrl-Z; then call
    /// handleInput(). A descriptor is -1 when there is no keyboard.
    std::array<int, 2> fds() const;
    void handleInput();
    /// Whether the user asked for the end.
    bool ended() const { return mKeys.ended(); }

    /// Draws, unless the terminal takes nothing at the moment (Ctrl-S).
    void draw(const platform::vehicle::ServiceState& service);

private:
    struct Terminal;
    struct Layout;

    void handleSignals();
    void drawHead(const Layout& layout, const platform::vehicle::ServiceState& service);
    void drawRow(int line, const Layout& layout, const PropertyRow& row);
    void drawFoot();

    WatchView mView;
    WatchKeys mKeys{mView};
    std::unique_ptr<Terminal> mTerminal;
};

}  // namespace qvn::tools
