#include "can-service-sim/panel/PanelServer.h"

#include <httplib.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <set>
#include <thread>
#include <utility>
#include <vector>

#include "can-service-sim/panel/Connection.h"
#include "can-service-sim/panel/IpAddress.h"
#include "can-service-sim/panel/PageFiles.h"
#include "can-service-sim/panel/RequestGuard.h"
#include "desk/BadInput.h"
#include "desk/Text.h"
#include "sync/Mutex.h"

namespace qvn::tools {
namespace {

constexpr std::size_t kMostPages = 32;  // each holds a thread
constexpr std::size_t kThreads = kMostPages + 8;
constexpr std::size_t kLongestLine = 4096;
constexpr int kSendBuffer = 64 * 1024;

constexpr char kText[] = "text/plain; charset=utf-8";

// The page takes nothing from elsewhere, and nobody puts it into a frame.
const httplib::Headers kHeaders = {
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; img-src 'self'; base-uri 'none'; "
     "form-action 'none'; frame-ancestors 'none'"},
    {"X-Content-Type-Options", "nosniff"},
    {"Referrer-Policy", "no-referrer"},
    {"Cache-Control", "no-store"},
};

void reply(httplib::Response& response, int status, const std::string& text) {
    response.status = status;
    response.set_content(text.empty() || text.back() == '\n' ? text : text + "\n", kText);
}

std::string reasonOf(int status) {
    switch (status) {
        case 404:
            return "nothing is here; the panel is at /, its events at /events, and /line takes lines by POST";
        case 413:
            return "the request is too long";
        case 414:
            return "the path is too long";
        default:
            return "the request is no proper HTTP";
    }
}

/// The library takes a path for a regular expression.
std::string pattern(std::string path) {
    const std::size_t dot = path.find('.');
    return dot == std::string::npos ? path : path.insert(dot, 1, '\\');
}

void setOption(socket_t socket, int level, int option, int value) {
    setsockopt(socket, level, option, &value, sizeof value);
}

std::string ownHostName() {
    char name[256] = "";
    gethostname(name, sizeof name - 1);
    return name;
}

}  // namespace

class PanelServer::Http final : private httplib::Server {
public:
    explicit Http(PanelServer::Handlers handlers);
    ~Http() override;

    bool listenAt(const std::string& address, int port, std::string* error);
    int port() const { return mPort; }

private:
    bool process_and_close_socket(socket_t socket) override;
    bool enter(socket_t socket);
    void leave(socket_t socket);

    HandlerResponse guard(const httplib::Request& request, httplib::Response& response) const;
    void takeLine(const httplib::Request& request, httplib::Response& response,
                  const httplib::ContentReader& content) const;
    void openPage(httplib::Response& response);
    std::shared_ptr<PageStream> newPage();

    const PanelServer::Handlers mHandlers;
    const std::string mHostName = ownHostName();
    int mPort = 0;
    std::atomic<bool> mListened{false};  // the thread has ended listening
    std::thread mThread;
    sync::Mutex mMutex;
    std::set<socket_t> mConnections QVN_GUARDED_BY(mMutex);
    std::vector<std::weak_ptr<PageStream>> mPages QVN_GUARDED_BY(mMutex);
    bool mClosing QVN_GUARDED_BY(mMutex) = false;
};

PanelServer::Http::Http(PanelServer::Handlers handlers) : mHandlers(std::move(handlers)) {
    new_task_queue = [] { return new httplib::ThreadPool(kThreads); };
    // Not the library's own choice, by which two programs may share a port. The connections take these over: what is on
    // its way to a page that takes nothing is little, and a page that is out of reach is given up.
    set_socket_options([](socket_t socket) {
        setOption(socket, SOL_SOCKET, SO_REUSEADDR, 1);
        setOption(socket, SOL_SOCKET, SO_SNDBUF, kSendBuffer);
        setOption(socket, IPPROTO_TCP, TCP_NODELAY, 1);
    });
    set_payload_max_length(kLongestLine);
    set_default_headers(kHeaders);
    set_pre_routing_handler([this](const auto& request, auto& response) { return guard(request, response); });
    set_error_handler([](const httplib::Request&, httplib::Response& response) {
        if (response.body.empty()) {
            reply(response, response.status, reasonOf(response.status));
        }
    });
    for (const PageFile& file : pageFiles()) {
        Get(pattern(file.path), [&file](const httplib::Request&, httplib::Response& response) {
            response.set_content(file.content.data(), file.content.size(), file.type);
        });
    }
    Get("/events", [this](const httplib::Request&, httplib::Response& response) { openPage(response); });
    Post("/line", [this](const auto& request, auto& response, const httplib::ContentReader& content) {
        takeLine(request, response, content);
    });
}

PanelServer::Http::~Http() {
    {
        const sync::MutexLock lock(mMutex);
        mClosing = true;
        for (const std::weak_ptr<PageStream>& known : mPages) {
            if (const std::shared_ptr<PageStream> page = known.lock()) {
                page->end();
            }
        }
        for (const socket_t connection : mConnections) {
            shutdown(connection, SHUT_RDWR);
        }
    }
    if (mThread.joinable()) {
        stop();
        mThread.join();
    }
}

bool PanelServer::Http::listenAt(const std::string& address, int port, std::string* error) {
    errno = 0;
    mPort = port == 0 ? bind_to_any_port(address) : (bind_to_port(address, port) ? port : -1);
    if (mPort < 0) {
        const bool taken = errno == EADDRINUSE;
        *error = "the panel cannot listen at " + urlHost(address) + ":" + std::to_string(port) +
                 (errno != 0 ? std::string(": ") + std::strerror(errno) : "") +
                 (taken ? "; name another port with --panel PORT, 0 takes a free one" : "");
        return false;
    }
    mThread = std::thread([this] {
        listen_after_bind();
        mListened = true;
        const sync::MutexLock lock(mMutex);
        if (!mClosing) {
            mHandlers.onFailure();
        }
    });
    // Before it listens it cannot be stopped.
    while (!is_running() && !mListened) {
        std::this_thread::yield();
    }
    return true;
}

/// One request a connection: one that waits for a next request would hold a thread.
bool PanelServer::Http::process_and_close_socket(socket_t socket) {
    bool processed = false;
    if (enter(socket)) {
        Connection connection(socket);
        bool closed = false;
        processed = process_request(connection, true, closed, {});
        connection.finish();
        leave(socket);
    }
    close(socket);
    return processed;
}

bool PanelServer::Http::enter(socket_t socket) {
    const sync::MutexLock lock(mMutex);
    return !mClosing && mConnections.insert(socket).second;
}

void PanelServer::Http::leave(socket_t socket) {
    const sync::MutexLock lock(mMutex);
    mConnections.erase(socket);
}

PanelServer::Http::HandlerResponse PanelServer::Http::guard(const httplib::Request& request,
                                                            httplib::Response& response) const {
    const bool reads = request.method == "GET" || request.method == "HEAD";
    if (!reads && (request.method != "POST" || request.path != "/line")) {
        response.set_header("Allow", request.path == "/line" ? "POST" : "GET, HEAD");
        reply(response, 405, tools::quoted(request.method) + " is not taken here; lines are taken by POST at /line");
        return HandlerResponse::Handled;
    }
    // A person may come by a link from anywhere.
    const bool navigates = request.path == "/" && request.get_header_value("Sec-Fetch-Mode") == "navigate";
    const std::string reason = refusal({request.get_header_value("Host"), request.get_header_value("Origin"),
                                        navigates ? std::string() : request.get_header_value("Sec-Fetch-Site")},
                                       mHostName);
    if (reason.empty()) {
        return HandlerResponse::Unhandled;
    }
    reply(response, 403, reason);
    return HandlerResponse::Handled;
}

void PanelServer::Http::takeLine(const httplib::Request& request, httplib::Response& response,
                                 const httplib::ContentReader& content) const {
    if (request.is_multipart_form_data()) {
        reply(response, 415, "the line is expected as the request's body, not as a form");
        return;
    }
    std::string line;
    // The library's own limit is one of announced lengths.
    const bool whole = content([&line](const char* part, std::size_t size) {
        line.append(part, size);
        return line.size() <= kLongestLine;
    });
    if (!whole) {
        // The library has set the status for an announced length that is too large.
        const int status = line.size() > kLongestLine ? 413 : std::max(response.status, 400);
        reply(response, status, reasonOf(status));
        return;
    }
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) {
        line.pop_back();
    }
    try {
        if (line.find('\n') != std::string::npos) {
            throw BadInput("several lines came at once; expected one");
        }
        reply(response, 200, mHandlers.takeLine(line));
    } catch (const BadInput& error) {
        reply(response, 400, error.what());
    } catch (const std::exception&) {
        reply(response, 503, "the simulator ends");
    }
}

void PanelServer::Http::openPage(httplib::Response& response) {
    const std::shared_ptr<PageStream> page = newPage();
    if (!page) {
        reply(response, 503, std::to_string(kMostPages) + " pages are open, which is the most; close one of them");
        return;
    }
    response.set_chunked_content_provider(
        "text/event-stream",
        [page, texts = std::vector<PageStream::Text>()](std::size_t, httplib::DataSink& sink) mutable {
            if (!page->take(&texts)) {
                return false;
            }
            for (const PageStream::Text& text : texts) {
                if (!sink.write(text->data(), text->size())) {
                    return false;
                }
            }
            return true;
        },
        [page](bool) { page->end(); });
    mHandlers.openPage(page);
}

/// Null when there are too many.
std::shared_ptr<PageStream> PanelServer::Http::newPage() {
    const sync::MutexLock lock(mMutex);
    const auto gone = [](const std::weak_ptr<PageStream>& known) {
        const std::shared_ptr<PageStream> page = known.lock();
        return !page || page->ended();
    };
    mPages.erase(std::remove_if(mPages.begin(), mPages.end(), gone), mPages.end());
    if (mClosing || mPages.size() >= kMostPages) {
        return nullptr;
    }
    auto page = std::make_shared<PageStream>();
    mPages.push_back(page);
    return page;
}

PanelServer::PanelServer(Handlers handlers) : mHttp(std::make_unique<Http>(std::move(handlers))) {}

PanelServer::~PanelServer() = default;

bool PanelServer::listen(const std::string& address, int port, std::string* error) {
    return mHttp->listenAt(address, port, error);
}

int PanelServer::port() const {
    return mHttp->port();
}

}  // namespace qvn::tools
