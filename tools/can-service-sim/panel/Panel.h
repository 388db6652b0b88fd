#pragma once

#include <memory>
#include <string>
#include <vector>

#include "can-service-sim/EventLoop.h"
#include "can-service-sim/Journal.h"
#include "can-service-sim/Player.h"
#include "can-service-sim/panel/PageStream.h"
#include "can-service-sim/panel/PanelServer.h"
#include "can-service-sim/panel/PanelView.h"

namespace qvn::tools {

/// The panel in the browser: tells open pages what the vehicle is like, ten times a second where something changes, and
/// lets the player do what they send. It works in the event loop; without a page it costs next to nothing.
class Panel {
public:
    /// The journal, the player and the loop live longer.
    Panel(EventLoop& loop, Player& player, Journal& journal, const std::string& serviceName);
    ~Panel();
    Panel(const Panel&) = delete;
    Panel& operator=(const Panel&) = delete;

    /// @param port 0 takes a free one
    /// @param error is one sentence for the user on failure
    bool start(const std::string& address, int port, std::string* error);

private:
    std::string onLine(const std::string& line);
    void open(const std::shared_ptr<PageStream>& page);
    void sampleAt(Clock::time_point time);
    void update();
    void tell(const PageStream::Text& text);

    EventLoop& mLoop;
    Player& mPlayer;
    Journal& mJournal;
    PanelView mView;
    std::vector<std::shared_ptr<PageStream>> mPages;
    Clock::time_point mLastTold;
    bool mUpdates = false;
    PanelServer mServer;  // the last one: its threads use the others
};

}  // namespace qvn::tools
