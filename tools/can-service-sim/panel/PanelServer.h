#pragma once

#include <functional>
#include <memory>
#include <string>

#include "can-service-sim/panel/PageStream.h"

namespace qvn::tools {

/// The panel on HTTP, in threads of its own: the page's files, a stream of events for each page that is open, and the
/// lines that a page sends.
///
///     GET /           the page
///     GET /events     server-sent events, what PageStream is given
///     POST /line      a line for the simulator; 200 and what is to be told of it, 400 and what is wrong with it
class PanelServer {
public:
    /// Called on the server's threads.
    struct Handlers {
        /// @throws BadInput for a line that is wrong, any other exception when the simulator cannot take one now
        std::function<std::string(const std::string& line)> takeLine;
        std::function<void(std::shared_ptr<PageStream> page)> openPage;
        /// The server can listen no more, although nobody has ended it.
        std::function<void()> onFailure;
    };

    explicit PanelServer(Handlers handlers);
    /// When it returns, no handler runs or will run.
    ~PanelServer();
    PanelServer(const PanelServer&) = delete;
    PanelServer& operator=(const PanelServer&) = delete;

    /// Listens at an IP address.
    /// @param port 0 takes a free one
    /// @param error is one sentence for the user on failure
    bool listen(const std::string& address, int port, std::string* error);

    /// The port at which it listens.
    int port() const;

private:
    class Http;

    std::unique_ptr<Http> mHttp;
};

}  // namespace qvn::tools
